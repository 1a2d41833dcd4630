// A page that renews itself does so under the address that it was opened with: what was chosen since then, and where the
// keyboard was, is kept from one to the next.
(function () {
    "use strict";

    var NAME = "renewal of " + location.pathname;

    function taken() {
        try {
            var text = sessionStorage.getItem(NAME);
            sessionStorage.removeItem(NAME);
            return JSON.parse(text);
        } catch (refused) {
            return null; // the browser keeps nothing
        }
    }

    function keep() {
        var field = document.activeElement;
        var focus = field && field.form ? [field.form.getAttribute("name"), field.name, field.value] : [];
        try {
            sessionStorage.setItem(NAME, JSON.stringify({search: location.search, focus: focus}));
        } catch (refused) {
            return; // then the page begins anew
        }
    }

    function restoreFocus(focus) {
        document.querySelectorAll("form.filter input").forEach(function (field) {
            if (field.form.getAttribute("name") === focus[0] && field.name === focus[1] && field.value === focus[2]) {
                field.focus();
            }
        });
    }

    var kept = taken();
    if (kept && kept.search !== location.search) {
        history.replaceState(null, "", location.pathname + kept.search + location.hash);
    }
    window.addEventListener("load", function () {
        if (kept) {
            restoreFocus(kept.focus);
        }
    });
    if (document.querySelector("meta[http-equiv=refresh]")) {
        window.addEventListener("pagehide", keep);
    }
}());
