// What a browser tells of a page that it shows, for look_at.py.
({
    colour: function (text) {
        var parts = /^rgba?\(([\d.]+), ([\d.]+), ([\d.]+)(?:, ([\d.]+))?\)$/.exec(text);
        if (!parts) {
            throw new Error("expected a colour, found " + text);
        }
        return {rgb: parts.slice(1, 4).map(Number), alpha: parts[4] === undefined ? 1 : Number(parts[4])};
    },

    over: function (front, back) {
        return back.map(function (one, part) { return front.rgb[part] * front.alpha + one * (1 - front.alpha); });
    },

    // As WCAG has them.
    luminance: function (rgb) {
        var linear = rgb.map(function (one) {
            return one / 255 <= 0.04045 ? one / 255 / 12.92 : Math.pow((one / 255 + 0.055) / 1.055, 2.4);
        });
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2];
    },

    contrast: function (one, other) {
        var lights = [this.luminance(one), this.luminance(other)].sort(function (a, b) { return b - a; });
        return (lights[0] + 0.05) / (lights[1] + 0.05);
    },

    // The colour below an element's text; null over a picture or a pattern.
    backgroundOf: function (element) {
        var layers = [];
        var box = element.closest("g") && element.closest("g").querySelector("rect");
        if (box) {
            layers.push(this.colour(getComputedStyle(box).fill));
        }
        for (var at = element; at; at = at.parentElement) {
            var style = getComputedStyle(at);
            if (style.backgroundImage !== "none") {
                return null;
            }
            layers.push(this.colour(style.backgroundColor));
        }
        var self = this;
        var page = matchMedia("(prefers-color-scheme: dark)").matches ? [0, 0, 0] : [255, 255, 255];
        return layers.reverse().reduce(function (back, front) { return self.over(front, back); }, page);
    },

    // Texts whose contrast is less than that.
    faintTexts: function (least) {
        var walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
        var faint = new Set();
        var count = 0;
        while (walker.nextNode()) {
            var element = walker.currentNode.parentElement;
            var isShown = walker.currentNode.textContent.trim() !== "" && !element.closest("script") &&
                element.getClientRects().length > 0;
            if (isShown) {
                var style = getComputedStyle(element);
                var back = this.backgroundOf(element);
                var front = this.colour(element.closest("svg") ? style.fill : style.color);
                var ratio = back === null ? 0 : this.contrast(this.over(front, back), back);
                count += 1;
                if (ratio < least) {
                    faint.add(ratio.toFixed(2) + " of <" + element.tagName + " class=" + element.className + "> " +
                        walker.currentNode.textContent.slice(0, 30));
                }
            }
        }
        return {count: count, faint: Array.from(faint)};
    },

    // Parts of bars that the page's colour hides.
    faintBars: function (least) {
        var self = this;
        return Array.from(document.querySelectorAll(".bar span, .tally li"), function (part) {
            var style = getComputedStyle(part, part.tagName === "LI" ? "::before" : null);
            var back = self.backgroundOf(part.parentElement);
            return [self.contrast(self.colour(style.borderTopColor).rgb, back), part.className];
        }).filter(function (found) { return found[0] < least; });
    },

    // What is wider than its place.
    wide: function () {
        var width = document.documentElement.clientWidth;
        return Array.from(document.querySelectorAll("html, .scrolls, main *")).filter(function (one) {
            var isOpen = one.closest("svg") === null && one.getClientRects().length > 0;
            return isOpen && (one.matches("html, .scrolls") && one.scrollWidth > one.clientWidth ||
                one.getBoundingClientRect().right > width + 0.5);
        }).map(function (one) { return one.tagName + " " + one.className + " " + one.textContent.slice(0, 30); });
    },

    focus: function () {
        var one = document.activeElement;
        var style = getComputedStyle(one);
        var back = this.backgroundOf(one.parentElement || one);
        var isSeen = one.matches(":focus-visible") && style.outlineStyle !== "none" && parseFloat(style.outlineWidth) >= 2 &&
            this.contrast(this.colour(style.outlineColor).rgb, back) >= 3;
        return {form: one.form ? one.form.getAttribute("name") : null, field: one.name || "", value: one.value || "",
                tag: one.tagName, seen: isSeen};
    },

    // Puts the keyboard right before a form.
    goBefore: function (name) {
        var form = document.querySelector("form[name='" + name + "']");
        var before = Array.from(document.querySelectorAll("a[href], input, [tabindex]")).filter(function (one) {
            return one.getClientRects().length > 0 && one.compareDocumentPosition(form) === Node.DOCUMENT_POSITION_FOLLOWING;
        });
        if (before.length > 0) {
            before[before.length - 1].focus();
        }
    },

    filters: function () {
        return Array.from(document.querySelectorAll("form.filter"), function (form) { return form.getAttribute("name"); });
    },

    // The rows of a filter's table: what each holds, how it came out, whether it is shown.
    rows: function (name) {
        var frame = document.querySelector("form.filter[name='" + name + "']").nextElementSibling;
        return Array.from(frame.querySelectorAll("tbody tr"), function (row) {
            return {text: row.textContent.toLowerCase(), outcome: row.dataset.outcome || "",
                    shown: row.getClientRects().length > 0};
        });
    }
})
