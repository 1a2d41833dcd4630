"""Plants many faults in a source at once: a function gets a copy of its body for each of its faults, and VELLORAN_FAULT in
the environment of a program tells which runs. So one build serves all faults within functions."""

import re

from mutants import Finder

# Also writes which functions run, for a choice of the tests that a fault can touch, to the file that VELLORAN_SEEN names.
# Only the standard library's streams: tests replace system calls.
CHOICE = """#ifndef PLANTED_FAULTS
#define PLANTED_FAULTS
#include <cstdio>
#include <cstdlib>
inline int PlantedFault(int function) {
    static const char* const text = std::getenv("VELLORAN_FAULT");
    static const int fault = text == nullptr ? 0 : std::atoi(text);
    static const char* const seen = std::getenv("VELLORAN_SEEN");
    static bool known[1 << 16];
    if (seen != nullptr && not known[function]) {
        known[function] = true;
        if (std::FILE* const file = std::fopen(seen, "a")) {
            std::fprintf(file, "%d\\n", function);
            std::fclose(file);
        }
    }
    return fault;
}
#endif
"""


def bodies(file, source):
    """Returns the first and last bracket of the outermost function bodies, but of those that the compiler itself must be
    able to run, or whose type it takes from the body."""
    finder = Finder(file, source)
    opening_of = {closing: opening for opening, closing in finder.closing.items()}
    found = []
    for opening, closing in sorted(finder.closing.items()):
        at = opening - 1
        while finder.text(at) in ("const", "override", "noexcept"):
            at -= 1
        if finder.text(opening) != "{" or finder.text(at) != ")" or at not in opening_of:
            continue
        name = opening_of[at] - 1
        if finder.text(name) in ("if", "while", "for", "switch", "catch", "]"):
            continue
        first, last = finder.tokens[opening].start, finder.tokens[closing].start
        if found and first < found[-1][1]:
            continue
        line = source.rfind("\n", 0, finder.tokens[name].start) + 1
        if not re.search(r"\b(constexpr|auto)\b", source[line:first]):
            found.append((first, last))
    return found


def brackets(text):
    """Returns how many brackets of each kind a text leaves open."""
    return [text.count(one) - text.count(other) for one, other in ("()", "[]", "{}")]


def body_of_each(mutants, sources):
    """Returns the body in which each mutant lies, as bodies() gives it; leaves out those outside of functions."""
    spans = {file: bodies(file, sources[file]) for file in {mutant.file for mutant in mutants}}
    found = {}
    for mutant in mutants:
        span = next((span for span in spans[mutant.file] if span[0] < mutant.start and mutant.end <= span[1]), None)
        replaced = sources[mutant.file][mutant.start:mutant.end]
        if span is not None and brackets(mutant.replacement) == brackets(replaced):
            found[mutant] = span
    return found


def plant(source, path, faults, are_named):
    """Returns the source with all of `faults`, (number, mutant, body) of each; compilers tell of those by fault-NUMBER if
    `are_named`, else each has the path and the line of what it replaces."""
    parts, done = [CHOICE, f'#line 1 "{path}"\n'], 0
    for first, last in sorted({span for _, _, span in faults}):
        line = source.count("\n", 0, first) + 1
        own = [(number, mutant) for number, mutant, span in faults if span == (first, last)]
        parts += [source[done:first], f"{{ switch (PlantedFault({own[0][0]})) {{"]
        for number, mutant in own:
            name = f"fault-{number}" if are_named else path
            text = source[first:mutant.start] + mutant.replacement + source[mutant.end:last + 1]
            parts.append(f'\ncase {number}:\n#line {line} "{name}"\n{text}\nbreak;')
        parts.append(f'\ndefault:\n#line {line} "{path}"\n{source[first:last + 1]}\n}}\n}}')
        done = last + 1
        parts.append(f'\n#line {source.count(chr(10), 0, done) + 1} "{path}"\n')
    parts.append(source[done:])
    return "".join(parts)
