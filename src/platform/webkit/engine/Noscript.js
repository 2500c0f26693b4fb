// At the end of each document that is loaded without scripts, before its pictures have come: what its author has for
// readers without scripts takes its place. The parser took it for mere text, because scripts could be run.
(function () {
    'use strict';
    const ofHead = {STYLE: 1, LINK: 1}, shown = [];
    for (const element of document.querySelectorAll('noscript')) {
        // Nothing in there is loaded yet, or can lead away.
        const inside = new DOMParser().parseFromString('<template>' + element.textContent + '</template>', 'text/html')
            .querySelector('template').content;
        for (const unwanted of inside.querySelectorAll('meta, script, base'))
            unwanted.remove();
        // The body would have begun with what is no matter of the head.
        if (document.head && document.head.contains(element))
            shown.push(...Array.from(inside.childNodes).filter(node => !ofHead[node.nodeName]));
        element.replaceWith(inside);
    }
    if (document.body)
        document.body.prepend(...shown);
})();
