/* SPDX-License-Identifier: MIT */
/* The search of every page: all words that are typed must stand in a name or in its line; names that begin so come first. */
document.addEventListener("DOMContentLoaded", () => {
    const field = document.getElementById("find");
    const list = document.getElementById("found");
    const root = document.body.dataset.root;

    const rank = (name, text) => (name === text ? 0 : name.startsWith(text) ? 1 : name.includes(text) ? 2 : 3);

    function look() {
        const text = field.value.trim().toLowerCase();
        const words = text.split(/\s+/);
        const hits = [];
        if (text) {
            for (const [name, kind, place, line] of names) {
                const all = (name + " " + kind + " " + line).toLowerCase();
                if (words.every(word => all.includes(word)))
                    hits.push([rank(name.toLowerCase(), text), name, kind, place, line]);
            }
        }
        hits.sort((a, b) => a[0] - b[0]);
        list.replaceChildren(...hits.slice(0, 40).map(([, name, kind, place, line]) => {
            const link = document.createElement("a");
            link.href = root + place;
            link.append(Object.assign(document.createElement("b"), {textContent: name}), " " + kind,
                        Object.assign(document.createElement("small"), {textContent: line}));
            return link;
        }));
        list.hidden = !text;
        if (text && !hits.length)
            list.textContent = "Nothing by that name.";
    }

    field.addEventListener("input", look);
    field.addEventListener("keydown", event => {
        const links = [...list.querySelectorAll("a")];
        if (event.key === "Escape") {
            field.value = "";
            look();
        } else if (event.key === "Enter" && links.length) {
            location.href = links[0].href;
        } else if (event.key === "ArrowDown" && links.length) {
            event.preventDefault();
            links[0].focus();
        }
    });
    document.addEventListener("keydown", event => {
        if (event.key === "/" && document.activeElement !== field) {
            event.preventDefault();
            field.focus();
        }
    });
});
