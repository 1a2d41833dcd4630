// Filters of tables. Without them the page shows every row. The page's address keeps what was chosen, so that it can be
// sent to others.
(function () {
    "use strict";

    function filter(form) {
        var rows = Array.from(form.nextElementSibling.querySelectorAll("tbody tr"));
        var boxes = Array.from(form.querySelectorAll("input[type=checkbox]"));
        var status = form.querySelector(".shown");
        var text = form.elements.text;
        var hides = form.getAttribute("name") + ".hide";

        function hidden() {
            return boxes.filter(function (box) { return !box.checked; }).map(function (box) { return box.value; });
        }

        function show() {
            var wanted = text.value.toLowerCase();
            var unwanted = new Set(hidden());
            var count = 0;
            rows.forEach(function (row) {
                row.hidden = unwanted.has(row.dataset.outcome) ||
                    (wanted !== "" && row.textContent.toLowerCase().indexOf(wanted) < 0);
                count += row.hidden ? 0 : 1;
            });
            status.textContent = count === rows.length ? "" : count + " of " + rows.length + " rows shown";
        }

        function put(address, key, value) {
            if (value === "") {
                address.searchParams.delete(key);
            } else {
                address.searchParams.set(key, value);
            }
        }

        function keep() {
            var address = new URL(location.href);
            put(address, form.getAttribute("name"), text.value);
            put(address, hides, hidden().join(","));
            history.replaceState(null, "", address);
        }

        function restore() {
            var chosen = new URLSearchParams(location.search);
            var unwanted = (chosen.get(hides) || "").split(",");
            text.value = chosen.get(form.getAttribute("name")) || "";
            boxes.forEach(function (box) { box.checked = unwanted.indexOf(box.value) < 0; });
            show();
        }

        form.addEventListener("input", function () {
            show();
            keep();
        });
        form.addEventListener("submit", function (event) { event.preventDefault(); });
        form.hidden = false;
        restore();

        return {
            // Shows all rows, if this one is hidden.
            reveal: function (row) {
                if (rows.indexOf(row) >= 0 && row.hidden) {
                    form.reset();
                    show();
                    keep();
                    row.scrollIntoView();
                }
            }
        };
    }

    var filters = Array.from(document.querySelectorAll("form.filter"), filter);

    // A link to a row leads there, whatever is filtered.
    function follow() {
        var row = document.getElementById(decodeURIComponent(location.hash.slice(1)));
        filters.forEach(function (one) { one.reveal(row); });
    }
    window.addEventListener("hashchange", follow);
    follow();
    document.documentElement.dataset.script = "ready";
}());
