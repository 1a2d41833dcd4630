"""Finds every place in a C++ source where a small fault can be planted, and what the fault is.

Works on tokens, so comments, includes and the insides of literals are left alone. Relies on the formatting of the
sources: a binary operator stands between blanks, a template's bracket does not.
"""

import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<include>^[ ]*\#[ ]*(?:include|pragma|if|ifdef|ifndef|else|endif|error|undef)[^\n]*)
      | (?P<define>^[ ]*\#[ ]*define[ ]+\w+(?:\([^)\n]*\))?)
      | (?P<string>"(?:\\.|[^"\\\n])*")
      | (?P<char>'(?:\\.|[^'\\\n])+')
      | (?P<number>\b(?:0[xX][0-9a-fA-F]+|\d+(?:'\d+)*)\b)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<sign><<=|>>=|->|&&|\|\||\+\+|--|<<|>>|<=|>=|==|!=|\+=|-=|\|=|&=|::|[-+*/%&|^~!=<>?:;,.(){}\[\]\\])
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

COMPARISONS = {
    "==": ["not_eq"],
    "not_eq": ["=="],
    "!=": ["=="],
    "<": ["<=", ">="],
    "<=": ["<", ">"],
    ">": [">=", "<="],
    ">=": [">", "<"],
}
SIGNS = {"+": "-", "-": "+", "*": "+", "/": "*", "&": "|", "|": "&", "+=": "-=", "-=": "+=", "|=": "&=", "&&": "||", "||": "&&"}
STEPS = {"++": "--", "--": "++"}
WORDS = {
    "and": "or",
    "or": "and",
    "true": "false",
    "false": "true",
    "MSG_CONTINUE": "MSG_CLOSE_CLIENT",
    "MSG_CLOSE_CLIENT": "MSG_CONTINUE",
    "push_front": "push_back",
    "push_back": "push_front",
    "emplace_back": "emplace_front",
    "pop_front": "pop_back",
    "front": "back",
    "first": "second",
    "second": "first",
    "min": "max",
    "max": "min",
    "NextSibling": "PreviousSibling",
    "readFds": "exceptionFds",
    "exceptionFds": "readFds",
    "g_serverFd": "g_clientFd",
    "g_clientFd": "g_serverFd",
}
LEVELS = ["1", "2", "4", "8", "16", "32", "64"]
NO_STATEMENT = {"return", "using", "namespace", "const", "static", "struct", "class", "constexpr", "typedef", "template",
                "else", "case", "default", "public", "private", "protected", "if", "for", "while", "switch", "do"}


@dataclass
class Token:
    kind: str
    text: str
    start: int

    @property
    def end(self):
        return self.start + len(self.text)


@dataclass(frozen=True)
class Mutant:
    """One fault: what stands from `start` to `end` in the file is replaced."""

    file: str
    start: int
    end: int
    replacement: str
    operator: str

    def apply(self, source):
        return source[: self.start] + self.replacement + source[self.end :]

    def lines(self, source):
        """The lines that change: their number, how they are and how they become, without the blanks around."""
        first = source.rfind("\n", 0, self.start) + 1
        last = source.find("\n", self.end)
        last = len(source) if last == -1 else last
        number = source.count("\n", 0, first) + 1
        was = source[first:last]
        becomes = source[first : self.start] + self.replacement + source[self.end : last]
        return number, " ".join(was.split()), " ".join(becomes.split())


def tokens_of(source):
    return [
        Token(match.lastgroup, match.group(), match.start())
        for match in TOKEN.finditer(source)
        if match.lastgroup not in ("comment", "include", "define") and match.group() != "\\"
    ]


class Finder:
    """Finds the mutants of one file."""

    def __init__(self, file, source):
        self.file = file
        self.source = source
        self.tokens = tokens_of(source)
        self.mutants = []
        self.closing = self.match_brackets()

    def find(self):
        for index, token in enumerate(self.tokens):
            self.find_in_token(index, token)
            if token.text in ("if", "while") and self.text(index + 1) == "(":
                self.find_in_condition(index)
            if token.text == "?":
                self.find_in_choice(index)
            if token.kind == "word" and self.text(index + 1) == "(":
                self.find_in_arguments(index + 1)
                self.find_in_initialiser(index + 1)
            if token.text == "{":
                self.find_early_return(index)
        self.find_statements()
        found = {(m.start, m.end, m.replacement): m for m in self.mutants}
        return sorted(found.values(), key=lambda m: (m.start, m.end, m.replacement))

    def text(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def add(self, operator, start, end, replacement):
        if self.source[start:end] != replacement:
            self.mutants.append(Mutant(self.file, start, end, replacement, operator))

    def replace(self, operator, token, replacement):
        self.add(operator, token.start, token.end, replacement)

    def match_brackets(self):
        closing, stack = {}, []
        for index, token in enumerate(self.tokens):
            if token.text in "([{" and token.kind == "sign":
                stack.append(index)
            elif token.text in ")]}" and token.kind == "sign" and stack:
                closing[stack.pop()] = index
        return closing

    def stands_between_blanks(self, token):
        return self.source[token.start - 1] in " \n" and self.source[token.end : token.end + 1] in (" ", "\n")

    def find_in_token(self, index, token):
        before, after = self.text(index - 1), self.text(index + 1)
        if token.text in COMPARISONS and self.stands_between_blanks(token):
            for other in COMPARISONS[token.text]:
                self.replace("comparison", token, other)
        elif token.text in SIGNS and self.stands_between_blanks(token):
            self.replace("arithmetic", token, SIGNS[token.text])
        elif token.text in ("<<", ">>", ">>=") and (before, after) != ("", "") and self.is_shift(index):
            self.replace("arithmetic", token, {"<<": ">>", ">>": "<<", ">>=": "<<="}[token.text])
        elif token.text in STEPS:
            self.replace("arithmetic", token, STEPS[token.text])
        elif token.text in ("not", "!"):
            self.replace("condition", token, "")
        elif token.kind == "word" and token.text in WORDS:
            self.replace("word", token, WORDS[token.text])
        elif token.kind == "number" and before == "(" and self.text(index - 2) == "VEL_LOG":
            self.replace("log level", token, LEVELS[(LEVELS.index(token.text) + 1) % len(LEVELS)])
        elif token.kind == "number":
            value = int(token.text.replace("'", ""), 0)
            for other in [value + 1] + ([value - 1] if value > 0 else []):
                self.replace("number", token, str(other))
        elif token.kind == "string":
            inside = token.text[1:-1]
            shorter = re.sub(r"(\\.|[^\\])$", "", inside) if inside else "X"
            self.replace("text", token, '"' + shorter + '"')
        elif token.kind == "char":
            self.replace("text", token, "'Z'")

    def is_shift(self, index):
        """Streams are written to with << as well: a shift is by a number or by something in brackets."""
        after = self.tokens[index + 1]
        return (after.kind == "number" and self.tokens[index].text != "<<") or (
            self.text(index - 1) == ")" and after.text == "("
        )

    def find_in_condition(self, index):
        opening = self.tokens[index + 1]
        closing = self.tokens[self.closing[index + 1]]
        condition = self.source[opening.end : closing.start]
        self.add("condition", opening.end, closing.start, f"not({condition})")
        if self.text(index) == "if":
            self.add("condition", opening.end, closing.start, "true")
        self.add("condition", opening.end, closing.start, "false")

    def find_in_choice(self, index):
        """condition ? one : other"""
        depth, colon = 0, None
        for at in range(index + 1, len(self.tokens)):
            text = self.text(at)
            depth += text in "([{" and self.tokens[at].kind == "sign"
            depth -= text in ")]}" and self.tokens[at].kind == "sign"
            if depth == 0 and text == ":" and colon is None:
                colon = at
            elif depth < 0 or (depth == 0 and text in (";", ",", "<<")):
                break
        one = self.source[self.tokens[index].end : self.tokens[colon].start]
        other = self.source[self.tokens[colon].end : self.tokens[at].start]
        self.add("choice", self.tokens[index].end, self.tokens[at].start, f"{other} :{one}")

    def find_in_arguments(self, index):
        """Swaps two neighbouring arguments of a call."""
        commas, depth = [index], 0
        for at in range(index + 1, self.closing[index]):
            text, kind = self.text(at), self.tokens[at].kind
            depth += kind == "sign" and text in "([{"
            depth -= kind == "sign" and text in ")]}"
            if depth == 0 and text == ",":
                commas.append(at)
        bounds = [self.tokens[at] for at in commas + [self.closing[index]]]
        for left, middle, right in zip(bounds, bounds[1:], bounds[2:]):
            one = self.source[left.end : middle.start].strip()
            other = self.source[middle.end : right.start].strip()
            if not self.is_declaration(index):
                self.add("arguments", left.end, right.start, f"{other}, {one}")

    def find_in_initialiser(self, index):
        """A member that is not given its value: name(options.name)"""
        if [self.text(index + 1), self.text(index + 2)] == ["options", "."] and self.closing[index] == index + 4:
            self.add("initialiser", self.tokens[index].end, self.tokens[index + 4].start, "")

    def is_declaration(self, index):
        """Whether the bracket opens the parameters of a function: its name follows a type, not an operator."""
        before = self.tokens[index - 2] if index >= 2 else None
        return before is None or (before.kind == "word" and before.text not in ("return", "not", "and", "or", "throw")) \
            or before.text in ("*", "&", "::")

    def find_early_return(self, index):
        """Returns at once from the function whose body begins here."""
        at = index - 1
        if self.text(at) in ("const", "override", "noexcept"):
            at -= 1
        openings = [opening for opening, closing in self.closing.items() if closing == at and self.text(at) == ")"]
        if not openings or self.text(openings[0] - 1) in ("if", "while", "for", "switch", "catch"):
            return
        name = openings[0] - 1
        line = self.source[self.source.rfind("\n", 0, self.tokens[name].start) + 1 : self.tokens[name].start]
        if line.startswith(" ") or not line.strip():
            return
        end = self.tokens[index].end
        self.add("early return", end, end, " return;" if "void " in line or "noreturn" in line else " return {};")

    def find_statements(self):
        """Removes whole statements that are no declarations."""
        starts_after = {";", "{", "}", ":", "else"}
        for index, token in enumerate(self.tokens):
            before = self.text(index - 1)
            is_start = before in starts_after or (before == ")" and self.ends_condition(index - 1))
            if not is_start or token.text in NO_STATEMENT or token.kind not in ("word", "sign") or token.text in "{}":
                continue
            end = self.statement_end(index)
            if end is not None and not self.declares(index, end) and not self.ends_switch(index, end):
                self.add("statement", token.start, self.tokens[end].start, "")

    def ends_condition(self, at):
        openings = [opening for opening, closing in self.closing.items() if closing == at]
        return bool(openings) and self.text(openings[0] - 1) in ("if", "while", "for")

    def ends_switch(self, index, end):
        """A break after which the switch ends anyway."""
        rest = [self.text(at) for at in range(end + 1, end + 6)]
        last = end + 5 if rest[:4] == ["default", ":", "break", ";"] else end + 1
        opening = next((o for o, closing in self.closing.items() if closing == last and self.text(o) == "{"), None)
        if self.text(index) != "break" or opening is None:
            return False
        condition = next((o for o, closing in self.closing.items() if closing == opening - 1), None)
        return condition is not None and self.text(condition - 1) == "switch"

    def statement_end(self, index):
        at = index
        while at < len(self.tokens) and self.text(at) != ";":
            if self.text(at) == "{":
                return None
            at = self.closing[at] + 1 if at in self.closing else at + 1
        return at if at < len(self.tokens) else None

    def declares(self, index, end):
        """A declaration begins with two names in a row, perhaps with a * or & or template brackets between."""
        statement = self.source[self.tokens[index].start : self.tokens[end].start]
        return re.match(r"(\[\[\w+\]\] )?[\w:]+(<[^;=]*>)?[ ]?[*&]{0,2}[ ][*&]?\w+", statement) is not None and not \
            re.match(r"(throw|break|continue)\b", statement)


def find_mutants(file, source):
    return Finder(file, source).find()
