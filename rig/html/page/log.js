// Search in the logs of a page. Without it the page shows every line.
(function () {
    "use strict";

    var MOST_MARKED = 5000; // lines; marking more takes longer than reading them
    var LINE_HEIGHT = 1.5; // em, as in the style

    function pattern(text) {
        return text === "" ? null : new RegExp(text.replace(/[.*+?^${}()|[\]\\]/g, "\\$&"), "gi");
    }

    function mark(code, text, wanted) {
        var end = 0;
        code.textContent = "";
        text.replace(wanted, function (found, at) {
            var marked = document.createElement("mark");
            marked.textContent = found;
            code.append(text.slice(end, at), marked);
            end = at + found.length;
        });
        code.append(text.slice(end));
    }

    function searchIn(log) {
        var form = log.querySelector("form");
        var status = form.querySelector(".shown");
        var lines = null; // read at the first search
        var marked = [];

        function readLines() {
            return Array.from(log.querySelectorAll("li"), function (item) {
                var code = item.querySelector("code");
                return {item: item, block: item.parentNode, code: code, text: code.textContent};
            });
        }

        function levels() {
            var boxes = form.querySelectorAll("input[name=level]:checked");
            return new Set(Array.from(boxes, function (box) { return box.value; }));
        }

        function unmark() {
            marked.forEach(function (line) { line.code.textContent = line.text; });
            marked = [];
        }

        function showBlocks(shown) {
            log.querySelectorAll(".lines").forEach(function (block) {
                var count = shown.get(block) || 0;
                block.hidden = count === 0;
                block.style.containIntrinsicSize = "auto " + count * LINE_HEIGHT + "em";
            });
        }

        function report(count, wanted) {
            var text = count === lines.length ? "" : count + " of " + lines.length + " lines shown";
            var limit = wanted && count > MOST_MARKED ? ", marked in the first " + MOST_MARKED + " of them" : "";
            status.textContent = text + limit;
            log.dataset.shown = count;
        }

        function show() {
            var wanted = pattern(form.elements.search.value);
            var levelsWanted = levels();
            var proofOnly = form.elements.evidence.checked;
            var shown = new Map();
            var count = 0;
            lines = lines || readLines();
            unmark();
            lines.forEach(function (line) {
                var fits = levelsWanted.has(line.item.dataset.level) &&
                    (!proofOnly || line.item.classList.contains("evidence")) &&
                    (!wanted || line.text.search(wanted) >= 0);
                line.item.hidden = !fits;
                if (fits) {
                    count += 1;
                    shown.set(line.block, (shown.get(line.block) || 0) + 1);
                    if (wanted && marked.length < MOST_MARKED) {
                        mark(line.code, line.text, wanted);
                        marked.push(line);
                    }
                }
            });
            showBlocks(shown);
            report(count, wanted);
        }

        var waiting = 0;
        form.addEventListener("input", function () {
            clearTimeout(waiting);
            waiting = setTimeout(show, 150);
        });
        form.addEventListener("submit", function (event) { event.preventDefault(); });
        form.hidden = false;

        return {
            // Shows the lines that hold the text.
            search: function (text) {
                form.elements.search.value = text;
                show();
            },
            // Shows all lines, if this one is hidden.
            reveal: function (line) {
                if (log.contains(line) && line.hidden) {
                    form.reset();
                    show();
                    line.scrollIntoView();
                }
            }
        };
    }

    var logs = Array.from(document.querySelectorAll(".log"), searchIn);

    // A link to a line leads there, whatever is being searched for.
    window.addEventListener("hashchange", function () {
        var line = document.getElementById(decodeURIComponent(location.hash.slice(1)));
        if (line) {
            logs.forEach(function (log) { log.reveal(line); });
        }
    });

    // "report.html?search=DONE" opens the page with a search.
    var text = new URLSearchParams(location.search).get("search");
    if (text) {
        logs.forEach(function (log) { log.search(text); });
    }
}());
