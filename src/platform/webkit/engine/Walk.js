// Describes the rendered page as one flat list of fields, see RenderedPageReader.cpp; runs in a world of its own,
// so that nothing that the page does to its prototypes is seen here.
//
// Each frame of a page has this function in its own world, and may look at its own document only. That of the main
// frame is called with the limits and with the functions of all frames by their windows (`walks`). Where a frame
// stands it calls that one's, with what they all write to (`shared`), which no page gets hold of. A page that shows
// nothing is null where the limits say so.
(function (limits, walks, shared) {
    'use strict';
    const TEXT = 0, BREAK = 1, BLOCK = 2, END = 3, ITEM = 4, LIST = 5, TABLE = 6, ROW = 7, CELL = 8, IMAGE = 9,
        RULE = 10, CUT = 11;
    const isMain = !shared;
    shared = shared || {events: [], styles: [], blocks: [], images: [], styleNumbers: new Map(), blockNumbers: new Map(),
        isAtEdge: true, nodesLeft: limits.nodes, unitsLeft: limits.units, end: Date.now() + limits.milliseconds,
        frames: 0, depth: 0, shown: 0, isCut: false};
    const events = shared.events, styles = shared.styles, blocks = shared.blocks, images = shared.images;

    // Controls named "tagName" or "childNodes" hide those properties of their form, and documents have the same.
    function getter(prototype, name) {
        const get = Object.getOwnPropertyDescriptor(prototype, name).get;
        return Function.prototype.call.bind(get);
    }
    const tagNameOf = getter(Element.prototype, 'tagName'), shadowRootOf = getter(Element.prototype, 'shadowRoot'),
        nodeTypeOf = getter(Node.prototype, 'nodeType'), childNodesOf = getter(Node.prototype, 'childNodes'),
        bodyOf = getter(Document.prototype, 'body');

    // What appears by an animation would be caught at its first frame; one without an end has none to wait for.
    let finished = 0;
    for (const animation of Document.prototype.getAnimations.call(document)) {
        if (++finished % 64 === 0 && Date.now() > shared.end)
            break;
        try {
            animation.finish();
        } catch (error) {
            animation.cancel();
        }
    }

    const clear = 'rgba(0, 0, 0, 0)', ink = /[^ \t\n\r\f]/;
    const blockStarts = {block: 1, 'flow-root': 1, 'list-item': 1, flex: 1, grid: 1, table: 1, 'table-caption': 1,
        'table-row-group': 1, 'table-header-group': 1, 'table-footer-group': 1, 'table-row': 1, 'table-cell': 1,
        '-webkit-box': 1};
    // Elements whose horizontal margins are meant for the reader; those of others are page layout.
    const indenting = {BLOCKQUOTE: 1, DD: 1, UL: 1, OL: 1, P: 1, PRE: 1, FIGURE: 1, H1: 1, H2: 1, H3: 1, H4: 1, H5: 1, H6: 1,
        ADDRESS: 1};
    const unseen = {AUDIO: 1, CANVAS: 1, METER: 1, PROGRESS: 1, OPTION: 1, MATH: 0, RP: 1, TEMPLATE: 1};
    const nothing = [];

    // The number of what the key stands for; `fields` makes it, the first time.
    function number(list, numbers, key, fields) {
        let at = numbers.get(key);
        if (at === undefined) {
            at = numbers.size;
            list.push(...fields());
            numbers.set(key, at);
        }
        return at;
    }

    // U+0000 separates the fields.
    function field(text) {
        return text.indexOf('\0') < 0 ? text : text.replace(/\0/g, '');
    }

    function length(text) {
        const value = parseFloat(text);
        return value === value && value < 1e6 && value > -1e6 ? Math.round(value * 100) / 100 : 0;
    }

    // What one element hands down to its text without CSS inheritance doing so.
    function Context(parent) {
        this.link = parent ? parent.link : '';
        // Backgrounds: that of the nearest inline box, block and table or row of one that have one.
        this.back = parent ? parent.back : '';
        this.ground = parent ? parent.ground : '';
        this.rowGround = parent ? parent.rowGround : '';
        this.lines = parent ? parent.lines : 0;
        this.raise = parent ? parent.raise : 0;
        this.quotes = parent ? parent.quotes : 0;
        this.style = -1;
        this.css = null;
        this.element = null;
        this.hidden = false;
        this.transform = 'none';
        this.space = '';
    }

    function luminance(color) {
        const parts = /^rgba?\(([\d.]+), ([\d.]+), ([\d.]+)/.exec(color);
        return parts ? (0.3 * parts[1] + 0.59 * parts[2] + 0.11 * parts[3]) / 255 : 0;
    }

    // Rich text stands on white. What a block is painted with comes along only where its text could not be read
    // without.
    function backOf(context, color) {
        if (context.back)
            return context.back;
        return context.ground && luminance(color) > 0.6 && luminance(context.ground) < 0.6 ?
            context.ground : '';
    }

    // Every question to a computed style costs about a microsecond; most elements need few of the answers.
    function spaceOf(context) {
        if (!context.space)
            context.space = context.css.whiteSpaceCollapse;
        return context.space;
    }

    function styleOf(context) {
        if (context.style >= 0)
            return context.style;
        const css = context.css, color = css.color, spacing = css.letterSpacing, back = backOf(context, color);
        context.transform = css.textTransform;
        spaceOf(context);
        // The shorthand is one question in place of four; it is empty where it cannot say all.
        const font = css.font || [css.fontStyle, css.fontWeight, css.fontSize, css.fontFamily].join(' ');
        const key = [font, color, back, context.lines, context.raise, spacing, context.space, context.link].join('\0');
        return context.style = number(styles, shared.styleNumbers, key, function () {
            return [css.fontFamily, length(css.fontSize), parseInt(css.fontWeight, 10) || 400,
                css.fontStyle === 'normal' ? 0 : 1, color, back, context.lines, context.raise, length(spacing),
                context.space, field(context.link)];
        });
    }

    function transformed(text, how) {
        switch (how) {
        case 'none': return text;
        case 'uppercase': return text.toLocaleUpperCase();
        case 'lowercase': return text.toLocaleLowerCase();
        case 'capitalize':
            return text.replace(/(^['\u2018]?|[\s\u00A0\-(\["\u201C]['\u2018]?)(\p{L})/gu,
                function (all, before, letter) { return before + letter.toLocaleUpperCase(); });
        default: return text;
        }
    }

    function putText(text, context) {
        if (!text)
            return;
        if (text.length > shared.unitsLeft) {
            text = text.slice(0, shared.unitsLeft);
            shared.isCut = true;
        }
        shared.unitsLeft -= text.length;
        // Between boxes blanks are nothing, and need no style.
        if (shared.isAtEdge && context.style < 0 && !ink.test(text) && spaceOf(context) === 'collapse')
            return;
        noteContent();
        const style = styleOf(context);
        events.push(TEXT, style, field(transformed(text, context.transform)));
    }

    function noteContent() {
        shared.isAtEdge = false;
        shared.shown++;
    }

    // Elements with generated text, by the style rules of the page that can be read.
    const generated = new Map();
    function findGenerated(rules, depth) {
        for (let at = 0; at < rules.length; at++) {
            const rule = rules[at];
            if (rule.cssRules && rule.cssRules.length && depth < 8)
                findGenerated(rule.cssRules, depth + 1);
            const selectors = rule.selectorText;
            if (!selectors || selectors.indexOf(':') < 0 || !rule.style)
                continue;
            const content = rule.style.content;
            if (!content || content[0] !== '"' && content[0] !== "'" || content.length < 3)
                continue;
            for (const part of selectors.split(',')) {
                const found = /^(.*?)::?(before|after)\s*$/.exec(part);
                if (!found)
                    continue;
                try {
                    const matching = Document.prototype.querySelectorAll.call(document, found[1].trim() || '*');
                    for (let index = 0; index < matching.length && generated.size < 20000; index++)
                        generated.set(matching[index], 1);
                } catch (error) { /* not a selector by itself */ }
            }
        }
    }
    for (const sheet of getter(Document.prototype, 'styleSheets')(document)) {
        try {
            if (!sheet.disabled)
                findGenerated(sheet.cssRules, 0);
        } catch (error) { /* from another origin */ }
    }

    function generatedText(element, which) {
        const css = getComputedStyle(element, which);
        if (css.display === 'none' || css.visibility !== 'visible')
            return '';
        const content = css.content;
        if (!/^("(?:[^"\\]|\\.)*"\s*)+$/.test(content))
            return '';
        let text = '';
        for (const piece of content.match(/"(?:[^"\\]|\\.)*"/g))
            text += piece.slice(1, -1).replace(/\\([0-9a-fA-F]{1,6})\s?/g, function (all, code) {
                const point = parseInt(code, 16);
                return point > 0 && point < 0x110000 ? String.fromCodePoint(point) : '';
            }).replace(/\\(.)/g, '$1');
        // Glyphs of icon fonts say nothing as text.
        return text.replace(/[\uE000-\uF8FF]/g, '');
    }

    function controlText(element) {
        if (element.tagName === 'TEXTAREA')
            return element.value;
        if (element.tagName === 'SELECT') {
            const shown = [], all = element.multiple || element.size > 1;
            for (const option of element.options) {
                if ((all || option.selected) && shown.length < 1000)
                    shown.push(option.label || option.text);
            }
            return shown.join(' ');
        }
        switch (element.type) {
        case 'hidden': case 'password': case 'checkbox': case 'radio': case 'file': case 'color': case 'range':
        case 'image':
            return '';
        case 'submit': return element.hasAttribute('value') ? element.value : 'Submit';
        case 'reset': return element.hasAttribute('value') ? element.value : 'Reset';
        default: return element.value;
        }
    }

    function putImage(element, address, alternative, context) {
        const box = element.getBoundingClientRect();
        if (context.hidden || box.width < 2 || box.height < 2 && element.tagName !== 'IMG') {
            if (!context.hidden && alternative && !element.naturalWidth)
                putText(alternative, context);
            return;
        }
        if (box.height < 2)
            return;
        noteContent();
        events.push(IMAGE, styleOf(context), images.length / 5);
        images.push(field(address), field(alternative), length(box.width), length(box.height), '');
    }

    function listStart(element) {
        if (element.tagName !== 'OL')
            return 1;
        if (!element.reversed || element.hasAttribute('start'))
            return element.start;
        let items = 0;
        for (let child = element.firstElementChild; child; child = child.nextElementSibling)
            items += child.tagName === 'LI' ? 1 : 0;
        return items;
    }

    function childrenOf(element) {
        if (tagNameOf(element) === 'SLOT') {
            const assigned = element.assignedNodes({flatten: true});
            if (assigned.length)
                return assigned;
        }
        return childNodesOf(shadowRootOf(element) || element);
    }

    const groupOrder = {'table-caption': 0, 'table-header-group': 1, 'table-footer-group': 3};
    function tableChildren(element) {
        const sorted = [[], [], [], []];
        for (const child of childNodesOf(element)) {
            if (nodeTypeOf(child) !== 1)
                continue;
            const order = groupOrder[getComputedStyle(child).display];
            sorted[order === undefined ? 2 : order].push(child);
        }
        return sorted[0].concat(sorted[1], sorted[2], sorted[3]);
    }

    function isLayoutTable(element, css) {
        if (element.tagName === 'TABLE')
            return element.rows.length === 1 && element.rows[0].cells.length === 1 &&
                css.borderTopStyle === 'none' &&
                getComputedStyle(element.rows[0].cells[0]).borderTopStyle === 'none';
        for (let child = element.firstElementChild; child; child = child.nextElementSibling) {
            const display = getComputedStyle(child).display;
            if (display === 'table-row' || display === 'table-row-group')
                return false;
        }
        return true;
    }

    // The four values of a shorthand in the order left, top, right, bottom.
    function sides(shorthand) {
        const parts = shorthand.match(/[a-z-]+\([^)]*\)|\S+/g) || ['0px'];
        const top = parts[0], right = parts[1] || top, bottom = parts[2] || top, left = parts[3] || right;
        return [left, top, right, bottom];
    }

    const noBorders = [0, '', 0, '', 0, '', 0, ''];
    function borders(css) {
        const width = css.borderWidth;
        if (width === '0px')
            return noBorders;
        const widths = sides(width), colors = sides(css.borderColor), found = [];
        for (let side = 0; side < 4; side++)
            found.push(length(widths[side]), colors[side]);
        return found;
    }

    function openTable(element, css) {
        const box = element.getBoundingClientRect(), outer = element.parentElement;
        events.push(TABLE, css.borderCollapse === 'collapse' ? 1 : 0, length(box.width),
            outer ? length(outer.getBoundingClientRect().width) : 0,
            css.backgroundColor === clear ? '' : css.backgroundColor);
    }

    function openCell(element, css, tableWidth, context) {
        const box = element.getBoundingClientRect();
        events.push(CELL, element.colSpan || 1, element.rowSpan === undefined ? 1 : element.rowSpan,
            tableWidth > 0 ? length(100 * box.width / tableWidth) : 0,
            css.backgroundColor === clear ? context.rowGround : css.backgroundColor, css.verticalAlign,
            ...sides(css.padding).map(length), ...borders(css));
    }

    function openBlock(element, css, display) {
        const tag = tagNameOf(element), style = element.style, align = css.textAlign, direction = css.direction,
            indent = css.textIndent, lineHeight = css.lineHeight, margin = css.margin, padding = css.padding,
            border = css.borderWidth;
        const heading = /^H[1-6]$/.test(tag) ? +tag[1] : 0;
        const isCell = display === 'table-cell' || tag === 'BODY';
        const isIndented = indenting[tag] ||
            tag !== 'BODY' && style && !!(style.marginLeft || style.paddingLeft || style.marginRight);
        const isCentred = style && style.marginLeft === 'auto';
        const keeps = display !== 'block' && display !== 'list-item';
        const key = [align, direction, indent, lineHeight, margin, padding, border, heading, isCell, isIndented,
            !!indenting[tag], isCentred, keeps].join(' ');
        shared.isAtEdge = true;
        events.push(BLOCK, number(blocks, shared.blockNumbers, key, function () {
            let left = 0, right = 0;
            if (isIndented) {
                left = length(css.marginLeft) + length(css.paddingLeft) + length(css.borderLeftWidth);
                right = length(css.marginRight) + length(css.paddingRight) + length(css.borderRightWidth);
                // An automatic margin centres; it is no indent.
                if (left === right && !indenting[tag] || isCentred)
                    left = right = 0;
            }
            return [align, direction === 'rtl' ? 1 : 0, left, right, length(indent),
                isCell ? 0 : length(css.marginTop),
                isCell ? 0 : length(css.paddingTop) + length(css.borderTopWidth),
                isCell ? 0 : length(css.marginBottom),
                isCell ? 0 : length(css.paddingBottom) + length(css.borderBottomWidth),
                lineHeight === 'normal' ? 0 : length(lineHeight), heading, keeps ? 1 : 0];
        }));
    }

    // One stack entry per open element: its children, how far they are, what closes it.
    const stack = [];
    function enter(children, context, closes, after) {
        stack.push({children: children, at: 0, context: context, closes: closes, after: after, table: 0});
    }

    function linkOf(element) {
        const written = element.getAttribute('href') || element.getAttribute('xlink:href') || '';
        const resolved = typeof element.href === 'string' ? element.href : written;
        return resolved.indexOf(limits.nowhere) === 0 ? written.trim() : resolved;
    }

    function visitElement(element, parent, tableWidth) {
        const tag = tagNameOf(element);
        if (unseen[tag] === 1 || tag === 'SCRIPT' || tag === 'STYLE')
            return;
        const css = getComputedStyle(element), display = css.display;
        if (display === 'none')
            return;
        const context = new Context(parent);
        context.css = css;
        context.element = element;
        context.hidden = css.visibility !== 'visible';
        if (display === 'contents') {
            enter(childrenOf(element), context, 0, '');
            return;
        }
        const inlineBox = display === 'inline-block' || display === 'inline-flex' || display === 'inline-grid' ||
            display === 'inline-table';
        const isBlock = blockStarts[display] === 1;
        if (context.lines && (display === 'inline-block' || css.float !== 'none'))
            context.lines = 0;
        const decoration = css.textDecorationLine;
        if (decoration !== 'none') {
            if (decoration.indexOf('underline') >= 0)
                context.lines |= css.textDecorationStyle === 'double' ? 4 : 1;
            if (decoration.indexOf('line-through') >= 0)
                context.lines |= 2;
        }
        const back = css.backgroundColor === clear ? '' : css.backgroundColor;
        const isTable = (display === 'table' || display === 'inline-table' && tag === 'TABLE') &&
            !isLayoutTable(element, css);
        if (isTable) {
            context.rowGround = back;
        } else if (display === 'table-cell' && tableWidth > 0) {
            // The cell shows it.
            if (back || context.rowGround)
                context.back = context.ground = '';
        } else if (tableWidth > 0 && /^table-(row|(row|header|footer)-group)$/.test(display)) {
            context.rowGround = back || context.rowGround;
        } else if (isBlock || inlineBox) {
            context.ground = back || context.ground;
            if (isBlock)
                context.back = '';
        } else {
            context.back = back || context.back;
        }
        if (!isBlock && !inlineBox && (tag === 'SUP' || tag === 'SUB' || element.hasAttribute('style') ||
            element.hasAttribute('class'))) {
            const place = css.verticalAlign;
            context.raise += place === 'super' ? 1 : place === 'sub' ? -1 : 0;
        }
        if (tag === 'A' || tag === 'a') {
            const link = element.hasAttribute('href') || element.hasAttribute('xlink:href') ?
                linkOf(element) : '';
            if (link && link.length <= limits.link && !/^javascript:/i.test(link))
                context.link = link;
        }

        switch (tag) {
        case 'BR':
            events.push(BREAK, styleOf(parent));
            return;
        case 'WBR':
            return;
        case 'HR':
            openBlock(element, css, display);
            events.push(RULE, END);
            shared.isAtEdge = true;
            return;
        case 'IMG':
        case 'IMAGE':
            if (isBlock)
                openBlock(element, css, display);
            putImage(element, element.naturalWidth ? element.currentSrc || element.src : '', element.alt || '',
                context);
            if (isBlock)
                events.push(END);
            return;
        case 'VIDEO':
            if (element.poster)
                putImage(element, element.poster, '', context);
            return;
        case 'EMBED':
        case 'OBJECT':
            if (!walkOf(element) && element.getBoundingClientRect().width > 1 &&
                (element.type ? /^image\//.test(element.type) && !element.firstElementChild : !element.firstChild)) {
                putImage(element, element.data || element.src, '', context);
                return;
            }
            // What could not be loaded has an empty frame, and its own contents are in its place.
            if (visitFrame(element, context))
                return;
            break;
        case 'INPUT':
            if (element.type === 'image') {
                putImage(element, element.src, element.alt || '', context);
                return;
            }
            // falls through
        case 'TEXTAREA':
        case 'SELECT':
            if (!context.hidden) {
                context.space = 'preserve';
                putText(controlText(element), context);
            }
            return;
        case 'svg':
            if (!context.hidden)
                visitDrawing(element, context);
            return;
        case 'IFRAME':
        case 'FRAME':
            visitFrame(element, context);
            return;
        case 'Q':
            context.quotes++;
            break;
        }

        let closes = 0, width = tableWidth, children = null;
        if (isBlock || inlineBox && (tag === 'TABLE')) {
            if (isTable) {
                openBlock(element, css, display);
                openTable(element, css);
                closes = 2;
                width = element.getBoundingClientRect().width;
                children = tableChildren(element);
            } else if (display === 'table-row' && tableWidth > 0) {
                events.push(ROW);
                closes = 1;
            } else if (display === 'table-cell' && tableWidth > 0) {
                openCell(element, css, tableWidth, context);
                openBlock(element, css, display);
                closes = 2;
                width = 0;
            } else if (/^table-(row|header|footer)-group$/.test(display) && tableWidth > 0) {
                closes = 0;
            } else {
                openBlock(element, css, display);
                closes = 1;
                if (display !== 'table-caption')
                    width = 0;
            }
        }
        if (tag === 'UL' || tag === 'OL' || tag === 'MENU' || tag === 'DIR') {
            events.push(LIST, css.listStyleType, listStart(element), element.reversed ? 1 : 0);
            closes++;
        } else if (display === 'list-item' && tag !== 'SUMMARY') {
            const value = tag === 'LI' && element.hasAttribute('value') ? element.value : '';
            events.push(ITEM, css.listStyleType, styleOf(context), value);
            closes++;
        }
        let after = '';
        if (tag === 'Q') {
            const outer = context.quotes % 2 === 1;
            putText(outer ? '\u201C' : '\u2018', context);
            after = outer ? '\u201D' : '\u2019';
        }
        if (generated.has(element) && !context.hidden) {
            putText(generatedText(element, '::before'), context);
            after = generatedText(element, '::after') + after;
        }
        if (tag === 'DETAILS' && !element.open) {
            children = nothing;
            for (const child of element.children) {
                if (child.tagName === 'SUMMARY') {
                    children = [child];
                    break;
                }
            }
        }
        enter(children || childrenOf(element), context, closes, after);
        stack[stack.length - 1].table = width;
    }

    function visitDrawing(element, context) {
        const box = element.getBoundingClientRect();
        // Smaller ones are the signs of buttons.
        if (box.width < limits.leastDrawing || box.height < limits.leastDrawing)
            return;
        const source = new XMLSerializer().serializeToString(element);
        if (source.length > limits.drawing)
            return;
        noteContent();
        events.push(IMAGE, styleOf(context), images.length / 5);
        images.push('', '', length(box.width), length(box.height), field(source));
    }

    function walkOf(element) {
        const inside = element.contentWindow;
        return inside ? walks.get(inside) : undefined;
    }

    // Whether there was anything in it.
    function visitFrame(element, context) {
        const walk = walkOf(element), before = events.length, shown = shared.shown;
        if (!walk || context.hidden || element.clientWidth < 2 || element.clientHeight < 2)
            return false;
        if (shared.frames >= limits.frames) {
            shared.isCut = true;
            return false;
        }
        openBlock(element, context.css, 'block');
        const depth = shared.depth;
        shared.frames++;
        shared.depth += stack.length;
        try {
            walk(limits, walks, shared);
            events.push(END);
        } catch (error) {
            // What it has opened would stay open.
            events.length = before;
        }
        shared.depth = depth;
        shared.frames--;
        shared.isAtEdge = true;
        return shared.shown > shown;
    }

    const whole = getter(Document.prototype, 'documentElement')(document), start = bodyOf(document) || whole;
    if (start) {
        const root = new Context(null);
        root.css = getComputedStyle(whole);
        root.ground = root.css.backgroundColor === clear ? '' : root.css.backgroundColor;
        enter([start], root, 0, '');
    }
    while (stack.length) {
        const top = stack[stack.length - 1];
        if (top.at >= top.children.length || shared.nodesLeft <= 0 || shared.unitsLeft <= 0) {
            shared.isCut = shared.isCut || top.at < top.children.length;
            stack.pop();
            if (top.after)
                putText(top.after, top.context);
            shared.isAtEdge = shared.isAtEdge || top.closes > 0;
            for (let count = top.closes; count > 0; count--)
                events.push(END);
            continue;
        }
        const node = top.children[top.at++];
        // The clock is not looked at more often than it is worth.
        if (--shared.nodesLeft % 64 === 0 && Date.now() > shared.end)
            shared.nodesLeft = 0;
        const kind = nodeTypeOf(node);
        if (kind === 3) {
            if (!top.context.hidden && !(top.table > 0 && !ink.test(node.data)))
                putText(node.data, top.context);
        } else if (kind === 1) {
            if (shared.depth + stack.length < limits.depth)
                visitElement(node, top.context, top.table);
            else
                shared.isCut = true;
        }
    }
    if (isMain && shared.shown === 0 && !limits.mayBeBlank)
        return null;
    if (isMain && shared.isCut)
        events.push(CUT);
    return isMain ? [field(getter(Document.prototype, 'title')(document)), shared.styleNumbers.size,
        shared.blockNumbers.size, images.length / 5].concat(styles, blocks, images, events).join('\0') : '';
})
