// The page of a report: draws figures of the format kalmia-figure by ECharts, and links what is chosen in one of them
// with all others and the table. Names of rows and columns are data: they reach the page as textContent alone, and
// the drawings as texts of a canvas or of SVG elements.
"use strict";
(() => {
  const page = JSON.parse(document.getElementById("kalmia-report").textContent);
  const drawn = JSON.parse(document.getElementById("kalmia-figures").textContent);
  const rowNames = drawn.names.rows || [];
  const shownRows = 200;      // of the table at once: more make a page slow
  const namedItems = 400;     // a plot of more names only items that stand out
  const legendEntries = 24;
  const symbols = ["circle", "diamond", "triangle", "rect", "roundRect", "pin", "arrow"];
  const dashes = ["solid", "dashed", "dotted", [8, 3, 2, 3], [12, 4], [2, 2, 8, 2], [4, 2], [1, 4]];

  const chosen = new Set();   // rows, from 0
  let hovered = -1;
  let colourColumn = -1;      // of page.columns; -1: as the figures have it
  const plots = new Map();

  // ---- small things

  function element(tag, attributes, ...children) {
    const made = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes || {})) {
      if (name.startsWith("on")) made.addEventListener(name.slice(2), value);
      else if (value !== null) made.setAttribute(name, value);
    }
    made.append(...children);
    return made;
  }

  const namesOf = (names) => (typeof names === "string" ? drawn.names[names] : names) || [];
  const shorten = (text, most) => (text.length > most ? text.slice(0, most - 1) + "…" : text);
  const isNumber = (value) => typeof value === "number";

  /** At most five digits, without thousands separators. */
  function digits(value) {
    if (!isNumber(value)) return "";
    const size = Math.abs(value);
    if (size !== 0 && (size < 1e-4 || size >= 1e7)) return value.toExponential(3).replace(/\.?0+e/, "e");
    return String(Number(size >= 1e5 ? value.toFixed(0) : value.toPrecision(5)));
  }

  /** The palette of the screen, or of paper whatever the screen has. */
  function palette(onPaper) {
    const probe = onPaper ? document.querySelector(".paper") : document.documentElement;
    const style = getComputedStyle(probe);
    const of = (name) => style.getPropertyValue("--" + name).trim();
    const colours = { classes: Array.from({ length: 8 }, (_, k) => of("class" + k)) };
    for (const name of ["panel", "ink", "dim", "line", "grid", "data", "second", "faint", "plain", "limit", "signal",
                        "chosen", "cell"]) {
      colours[name] = of(name);
    }
    colours.centre = colours.plain;
    colours.ring = colours.signal;
    return colours;
  }

  /** A cell of the table of rows, as text. */
  const cellText = (column, row) => (column.kind === "number" ? digits(column.values[row]) : column.values[row] || "");

  function save(name, type, content) {
    const url = content.startsWith("data:") ? content : URL.createObjectURL(new Blob([content], { type }));
    const link = element("a", { href: url, download: name });
    link.click();
    if (url.startsWith("blob:")) setTimeout(() => URL.revokeObjectURL(url), 1000);
  }

  // ---- classes: of a figure, or of the column by which rows are coloured

  /** Whether a column tells kinds: texts, and numbers such as 1, 2, 3. */
  function tellsClasses(column) {
    if (column.kind === "text") return true;
    const values = new Set(column.values);
    return values.size <= 8 && [...values].every((value) => value === null || Number.isInteger(value));
  }

  /** Labels of classes and the class of a row; null where rows are coloured by numbers or not at all. */
  function classesOfColumn() {
    const column = page.columns[colourColumn];
    if (!column || !tellsClasses(column)) return null;
    if (!column.classes) {
      const known = new Map();
      column.classOfRow = column.values.map((value) => {
        if (value === "" || value === null) return -1;
        if (!known.has(value)) known.set(value, known.size);
        return known.get(value);
      });
      column.classes = [...known.keys()].map(String);
    }
    return { labels: column.classes, of: (row) => column.classOfRow[row] };
  }

  const numbersOfColumn = () => {
    const column = page.columns[colourColumn];
    return column && !tellsClasses(column) ? column : null;
  };

  /** How points that belong to no class look. */
  const pointLook = (mark, colours) => (mark.look === "second" ? { colour: colours.second, symbol: "triangle" }
                                        : { colour: colours[mark.look] || colours.data, symbol: "circle" });

  const noSymbol = { opacity: 0 };  // a legend puts one on lines that have none

  function legendLook(mark, colours) {
    if (mark.type === "line") return { itemStyle: noSymbol };
    if (mark.type !== "points") return {};
    const { colour, symbol } = pointLook(mark, colours);
    return { icon: symbol, itemStyle: { color: colour } };
  }

  const classLook = (k, colours) => ({ colour: colours.classes[k % 8], symbol: symbols[k % symbols.length] });

  // ---- axes

  function niceStep(range, most) {
    const rough = range / most, power = 10 ** Math.floor(Math.log10(rough));
    return [1, 2, 5, 10].map((m) => m * power).find((step) => step >= rough * 0.999);
  }

  /** The ends of an axis: the fixed ones, or those of the data with a margin; a line over channels has none. */
  function rangeOf(axis, panel, which) {
    if (axis.kind === "category") return [-0.5, Math.max(0.5, namesOf(axis.categories).length - 0.5)];
    let low = Infinity, high = -Infinity, tight = which === "x";
    const take = (value) => {
      if (!isNumber(value)) return;
      low = Math.min(low, value);
      high = Math.max(high, value);
    };
    for (const mark of panel.marks) {
      if (mark.type !== "line" && mark.type !== "rule" && !(mark.type === "area" && mark.low)) tight = false;
      const half = mark.type === "bars" ? mark.width / 2 : mark.value ? 0.5 : 0;
      for (const value of mark[which]) {
        if (!isNumber(value)) continue;
        take(which === "x" || mark.value ? value - half : value);
        take(which === "x" || mark.value ? value + half : value);
      }
      if (which === "x") continue;
      for (const list of [mark.low, mark.high, mark.base]) (list || []).forEach(take);
      if (mark.type === "bars" && !mark.base) take(0);
    }
    if (low > high) [low, high] = [0, 1];
    const margin = low === high ? Math.max(Math.abs(low), 1) / 10 : tight ? 0 : 0.06 * (high - low);
    return [isNumber(axis.low) ? axis.low : low - margin, isNumber(axis.high) ? axis.high : high + margin];
  }

  function axisOption(axis, panel, which, index, colours, size) {
    const [min, max] = rangeOf(axis, panel, which);
    const isCategory = axis.kind === "category";
    const names = isCategory ? namesOf(axis.categories) : [];
    const room = which === "x" ? size.width - 80 : size.height - 50;
    const step = niceStep(max - min, Math.max(2, Math.floor(room / 80)));
    const isRound = (value) => Math.abs(value / step - Math.round(value / step)) < 1e-6;
    const ticks = (axis.ticks || []).filter((tick) => tick.at >= min && tick.at <= max);
    const option = {
      type: "value", gridIndex: index, min, max, name: shorten(axis.label, Math.floor(room / 6)),
      nameLocation: "middle", nameGap: which === "x" ? 30 : 48, nameTextStyle: { color: colours.dim, fontSize: 12 },
      axisLine: { show: true, onZero: false, lineStyle: { color: colours.line } },
      axisTick: { show: false },
      splitLine: { show: !isCategory, showMinLine: false, showMaxLine: false, lineStyle: { color: colours.grid } },
      axisLabel: {
        color: colours.dim, fontSize: 11, hideOverlap: true, showMinLabel: isRound(min), showMaxLabel: isRound(max),
        formatter: digits,
      },
    };
    if (axis.whole) option.minInterval = 1;
    if (ticks.length > 0) {
      const labels = new Map(ticks.map((tick) => [tick.at, tick.label]));
      option.axisLabel.customValues = [...labels.keys()];
      option.axisLabel.formatter = (value) => labels.get(value) || "";
    }
    if (isCategory) {
      const skip = Math.max(1, Math.ceil(names.length / Math.max(1, Math.floor(room / 22))));
      const longest = Math.max(0, ...names.slice(0, 1000).map((name) => name.length));
      const isTight = which === "x" && longest * 7 > room / Math.max(1, Math.ceil(names.length / skip));
      option.axisLabel.customValues = names.map((_, k) => k).filter((k) => k % skip === 0);
      option.axisLabel.formatter = (value) => shorten(names[value] || "", 14);
      Object.assign(option.axisLabel, { showMinLabel: true, showMaxLabel: true, rotate: isTight ? 45 : 0 });
      if (isTight) option.nameGap = 30 + Math.min(longest, 14) * 4.4;
      if (which === "y") option.nameGap = 30 + Math.min(longest, 14) * 5.5;
    }
    return option;
  }

  // ---- marks: what ECharts is told to draw

  const itemName = (mark, i) => {
    const k = mark.index ? mark.index[i] : i;
    return namesOf(mark.names)[k] || "";
  };
  const isOfRows = (mark) => mark.names === "rows";
  const rowOf = (mark, i) => (isOfRows(mark) ? (mark.index ? mark.index[i] : i) : -1);

  /** The class of an item, of the figure's own or of the column that colours rows. */
  function classOfItem(mark, i, classes) {
    if (classes && isOfRows(mark)) return classes.of(rowOf(mark, i));
    if (!mark.class) return -1;
    return mark.class.length === 1 ? mark.class[0] : mark.class[i];
  }

  function pointsSeries(context, mark, base) {
    const { colours, classes, numbers, plot } = context;
    const selected = new Set(mark.selected || []);
    const tinted = isOfRows(mark) && numbers;
    const own = pointLook(mark, colours);
    const lookOf = (i) => {
      const k = classOfItem(mark, i, classes);
      if (k >= 0) return classLook(k, colours);
      return isOfRows(mark) && classes ? { colour: colours.faint, symbol: "emptyCircle" } : own;
    };
    const many = mark.x.length > namedItems;
    const hasNames = Boolean(mark.labels) && plot.size.width > 300;
    const data = [];
    mark.x.forEach((x, i) => {
      if (!isNumber(x) || !isNumber(mark.y[i])) return;
      const value = tinted ? [x, mark.y[i], i, numbers.values[rowOf(mark, i)]] : [x, mark.y[i], i];
      const isAtEdge = x > context.edge, isNamed = hasNames && (!many || selected.has(i));
      // Items of their own take time: most are plain numbers.
      data.push(isNamed && (many || isAtEdge) ? { value, label: { show: true, position: isAtEdge ? "left" : "right" } }
                                              : value);
    });
    return {
      ...base, type: "scatter", data, silent: false, progressive: 0, large: false,
      dimensions: tinted ? ["x", "y", "item", "tint"] : ["x", "y", "item"],
      encode: { x: "x", y: "y" }, symbolSize: many ? 5 : 8,
      symbol: (value) => lookOf(value[2]).symbol,
      itemStyle: tinted ? { opacity: 0.9 } : {
        opacity: many ? 0.6 : 0.85,
        color: (item) => {
          const isSignal = selected.has(item.value[2]) && !plot.ownClasses(mark, classes);
          return isSignal ? colours.signal : lookOf(item.value[2]).colour;
        },
      },
      label: {
        show: hasNames && !many, position: "right", distance: 3, fontSize: 10, color: colours.dim,
        formatter: (item) => shorten(itemName(mark, item.value[2]), 16),
      },
      labelLayout: { hideOverlap: true },
      emphasis: { scale: 1.6 },
    };
  }

  function lineSeries(context, mark, base, order) {
    const { colours, plot } = context;
    const k = mark.look === "class" && mark.class ? mark.class[0] : -1;
    const colour = k >= 0 ? colours.classes[k % 8] : colours[mark.look] || colours.data;
    const dash = k >= 0 ? dashes[k % dashes.length]
                        : { second: "dashed", limit: [6, 4], plain: "solid", faint: "solid" }[mark.look] || "solid";
    const thin = mark.look === "faint" || mark.look === "plain";
    return {
      ...base, type: "line", z: thin ? 1 : 2 + order / 100, showSymbol: false, symbol: "none", silent: thin,
      data: mark.x.map((x, i) => [x, mark.y[i], i]), connectNulls: false, triggerLineEvent: true,
      // A closed line goes back in x, which thinning by x would tear.
      sampling: mark.x.length > 2 * plot.size.width && mark.look !== "limit" ? "lttb" : undefined,
      lineStyle: { color: colour, width: thin || mark.look === "limit" ? 1.2 : 1.8, type: dash },
      itemStyle: { color: colour }, emphasis: { disabled: true },
    };
  }

  /** What a custom series draws at one item, in pixels. */
  function customSeries(base, data, colour, shape) {
    return {
      ...base, type: "custom", clip: true, data, encode: { x: 0, y: 1 }, dimensions: ["x", "y", "item"],
      itemStyle: { color: colour }, renderItem: (params, api) => shape(api.value(2), api, params.coordSys),
    };
  }

  function barsSeries(context, mark, base) {
    const colour = context.colours[mark.look] || context.colours.data;
    const decal = mark.look === "second";
    return customSeries(base, mark.x.map((x, i) => [x, mark.y[i], i]), colour, (i, api) => {
      if (!isNumber(mark.x[i]) || !isNumber(mark.y[i])) return null;
      const from = mark.base ? mark.base[i] : 0;
      const [left, top] = api.coord([mark.x[i] - mark.width / 2, mark.y[i]]);
      const [right, bottom] = api.coord([mark.x[i] + mark.width / 2, from]);
      return {
        type: "rect",
        shape: { x: left, y: Math.min(top, bottom), width: Math.max(1, right - left), height: Math.abs(bottom - top) },
        style: { fill: colour, opacity: decal ? 0.75 : 1, stroke: decal ? context.colours.ink : undefined,
                 lineWidth: decal ? 1 : 0 },
      };
    });
  }

  function intervalsSeries(context, mark, base) {
    const { colours } = context;
    const data = mark.x.map((x, i) => [x, mark.y[i], i]);
    return customSeries({ ...base, name: "", silent: true, z: 4 }, data, colours.ink, (i, api) => {
      if (!isNumber(mark.low[i]) || !isNumber(mark.high[i])) return null;
      const [x, low] = api.coord([mark.x[i], mark.low[i]]), high = api.coord([mark.x[i], mark.high[i]])[1];
      const line = (x1, y1, x2, y2) => ({ type: "line", shape: { x1, y1, x2, y2 },
                                          style: { stroke: colours.ink, lineWidth: 1 } });
      return { type: "group",
               children: [line(x, low, x, high), line(x - 3, low, x + 3, low), line(x - 3, high, x + 3, high)] };
    });
  }

  function areaSeries(context, mark, base) {
    const { colours } = context;
    const colour = mark.look === "class" && mark.class ? classLook(mark.class[0], colours).colour
                                                        : colours[mark.look] || colours.data;
    if (mark.value) {
      return customSeries(base, mark.x.map((x, i) => [x, mark.y[i], i]), colour, (i, api) => {
        const [left, top] = api.coord([mark.x[i] - 0.5, mark.y[i] + 0.5]);
        const [right, bottom] = api.coord([mark.x[i] + 0.5, mark.y[i] - 0.5]);
        const share = isNumber(mark.value[i]) ? mark.value[i] : 0;
        return { type: "rect", shape: { x: left, y: top, width: right - left, height: bottom - top },
                 style: { fill: `rgba(${colours.cell}, ${0.08 + 0.55 * share})`, stroke: colours.panel } };
      });
    }
    const corners = mark.low ? mark.x.map((x, i) => [x, mark.high[i]])
                                     .concat(mark.x.map((x, i) => [x, mark.low[i]]).reverse())
                             : mark.x.map((x, i) => [x, mark.y[i]]);
    const known = corners.filter(([x, y]) => isNumber(x) && isNumber(y));
    if (known.length === 0) return null;
    return customSeries({ ...base, silent: true, z: 1 }, [[known[0][0], known[0][1], 0]], colour, (_, api) => ({
      type: "polygon", shape: { points: known.map((corner) => api.coord(corner)) },
      style: { fill: colour, opacity: 0.22 },
    }));
  }

  function ruleSeries(context, mark, base) {
    const { colours } = context;
    const isLevel = mark.y.length > 0;
    const colour = mark.look === "class" ? colours.data : colours[mark.look] || colours.data;
    const at = isLevel ? mark.y[0] : mark.x[0];
    // The item stands where the panel is for certain; the rule itself is drawn across it.
    return customSeries({ ...base, name: "", silent: true, z: 1 }, [[isLevel ? null : at, isLevel ? at : null, 0]],
                        colour, (_, api, area) => {
      const [x, y] = api.coord([isLevel ? 0 : at, isLevel ? at : 0]);
      const ends = isLevel ? { x1: area.x, y1: y, x2: area.x + area.width, y2: y }
                           : { x1: x, y1: area.y, x2: x, y2: area.y + area.height };
      const dash = mark.look === "limit" ? [6, 4] : mark.look === "centre" ? [2, 3] : null;
      const line = { type: "line", shape: ends, style: { stroke: colour, lineWidth: 1, lineDash: dash } };
      const text = { type: "text", style: {
        text: shorten(mark.name || "", 24), fill: colours.dim, stroke: colours.panel, lineWidth: 3,
        font: "10px sans-serif",
        x: isLevel ? ends.x2 - 3 : x + 3, y: isLevel ? y - 2 : area.y + 3, align: isLevel ? "right" : "left",
        verticalAlign: isLevel ? "bottom" : "top" } };
      return { type: "group", children: mark.name ? [line, text] : [line] };
    });
  }

  function textSeries(context, mark, base) {
    return {
      ...base, type: "scatter", symbolSize: 0.01, silent: true, z: 5,
      data: mark.x.map((x, i) => [x, mark.y[i], i]),
      label: { show: true, position: "inside", color: context.colours.ink, fontSize: 11,
               formatter: (item) => shorten(itemName(mark, item.value[2]), 20) },
      labelLayout: { hideOverlap: true },
    };
  }

  function seriesOf(context, mark, panelIndex, order) {
    const base = { id: `mark-${panelIndex}-${order}`, name: mark.name || "", xAxisIndex: panelIndex,
                   yAxisIndex: panelIndex, zlevel: 0, z: 3, animation: false };
    const list = [];
    if (mark.type === "points") list.push(pointsSeries(context, mark, base));
    if (mark.type === "line") list.push(lineSeries(context, mark, base, order));
    if (mark.type === "bars") list.push(barsSeries(context, mark, base));
    if (mark.type === "area") list.push(areaSeries(context, mark, base));
    if (mark.type === "rule") list.push(ruleSeries(context, mark, base));
    if (mark.type === "text") list.push(textSeries(context, mark, base));
    if (mark.low && mark.type !== "area") list.push(intervalsSeries(context, mark, { ...base, id: base.id + "-low" }));
    return list.filter(Boolean);
  }

  // ---- what stands on top of a drawing

  const onTop = { zlevel: 1, silent: true };

  function diamondAt([x, y], colours) {
    return new echarts.graphic.Polygon({ ...onTop, z: 1, style: { fill: colours.chosen, stroke: colours.panel },
                                         shape: { points: [[x, y - 7], [x + 7, y], [x, y + 7], [x - 7, y]] } });
  }

  function ringAt([cx, cy], colours) {
    return new echarts.graphic.Circle({ ...onTop, z: 2, shape: { cx, cy, r: 9 },
                                        style: { fill: "none", stroke: colours.ink, lineWidth: 2 } });
  }

  /** Names above their places, as far as they fit beside each other. */
  function addNames(names, layer, width, colours) {
    const taken = [];
    for (const { row, place: [x, y] } of names) {
      const text = shorten(rowNames[row], 16), half = 3.6 * text.length;
      const middle = Math.min(Math.max(x, half), width - half);
      const box = { left: middle - half, right: middle + half, top: y - 21, bottom: y - 8 };
      if (taken.some((one) => box.left < one.right && one.left < box.right && box.top < one.bottom &&
                              one.top < box.bottom)) continue;
      taken.push(box);
      layer.add(new echarts.graphic.Text({ ...onTop, z: 3, style: {
        text, x: middle, y: y - 8, align: "center", verticalAlign: "bottom", font: "bold 11px sans-serif",
        fill: colours.chosen, stroke: colours.panel, lineWidth: 3 } }));
    }
  }

  // ---- a plot

  /** "Scores" of "Scores: PLS of octane on gasoline.csv", since the page is called after the model. */
  const shortTitle = (title) => (title.endsWith(": " + page.title) ? title.slice(0, -page.title.length - 2) : title);

  class Plot {
    constructor(figure) {
      this.figure = figure;
      this.panels = [{ x: figure.x, y: figure.y, marks: figure.marks }, ...figure.below];
      this.components = page.components.find((of) => of.figure === figure.name) || null;
      this.isArmed = false;  // whether the pointer draws a lasso
      this.chart = null;
      this.top = null;       // what is drawn on top of it
      this.rows = new Set(this.panels.flatMap((panel) =>
        panel.marks.filter(isOfRows).flatMap((mark) => mark.x.map((_, i) => rowOf(mark, i)))));
      this.size = { width: 480, height: 330 };
      this.article = this.build();
    }

    get name() { return this.figure.name; }
    get isOfRows() { return this.rows.size > 0; }

    /** Whether the pointer can meet items; lines have none, and tell the numbers above one place of the axis. */
    get hasItems() {
      const isItem = (mark) => mark.type !== "line" && mark.type !== "rule" && !(mark.type === "area" && mark.low);
      return this.panels.every((panel) => panel.marks.some(isItem));
    }

    /** Whether an item's colour tells its class: then nothing else is told by it. */
    ownClasses(mark, classes) { return Boolean(mark.class) || Boolean(classes && isOfRows(mark)); }

    build() {
      const button = (action, text, title) =>
        element("button", { type: "button", "data-action": action, title, onclick: () => this[action](),
                            "aria-label": `${title}: ${this.figure.title}` }, text);
      const head = element("div", { class: "head" }, element("h3", {}, shortTitle(this.figure.title)));
      if (this.isOfRows) {
        const lasso = button("lasso", "⌇", "Choose rows by a lasso");
        lasso.setAttribute("aria-pressed", "false");
        head.append(lasso);
      }
      head.append(button("reset", "↺", "Whole picture, no row chosen"), button("svg", "SVG", "Save as SVG"),
                  button("png", "PNG", "Save as PNG"));
      this.canvas = element("div", { class: "canvas", role: "img", tabindex: "0", "aria-label": this.figure.alt,
                                     onkeydown: (event) => this.key(event) });
      this.canvas.style.height = this.height() + "px";
      this.print = element("div", { class: "print" });
      const article = element("article", { "data-plot": this.name, "data-kind": this.figure.kind, "data-selected": "0",
                                           "data-hovered": "" }, head);
      if (this.components) article.append(this.componentControls());
      article.append(this.canvas, this.print, element("p", { class: "alt" }, this.figure.alt));
      for (const note of this.figure.notes) article.append(element("p", { class: "note" }, note));
      return article;
    }

    height() { return 60 + this.panels.length * 270 + (this.hasLegend() ? 24 : 0); }

    hasLegend() {
      return this.figure.classes.length > 0 || this.panels[0].marks.some((mark) => mark.name && mark.type !== "rule");
    }

    componentControls() {
      const control = (which, label) => {
        const take = () => setComponents(this.name, this.choice("x"), this.choice("y"));
        const select = element("select", { "data-control": which + "-component", onchange: take });
        this.components.list.forEach((component, a) => {
          select.append(element("option", { value: String(a) }, component.label));
        });
        select.value = String(this.components[which]);
        return element("label", {}, label, select);
      };
      return element("div", { class: "axes" }, control("x", "across"), control("y", "up"));
    }

    choice(which) {
      return Number(this.article.querySelector(`select[data-control=${which}-component]`).value);
    }

    /** Puts two components, from 0, in place of those shown. Lines have one each, points both. */
    takeComponents(x, y) {
      const { list } = this.components, panel = this.panels[0];
      const before = [list[this.components.x], list[this.components.y]], now = [list[x], list[y]];
      const stretch = (values, from, to) =>
        values.map((v) => (isNumber(v) ? to.low + (v - from.low) / (from.high - from.low) * (to.high - to.low) : v));
      const points = panel.marks.find((mark) => mark.type === "points" && mark.names);
      if (points) {
        [points.x, points.y] = [now[0].values, now[1].values];
        const limit = panel.marks.find((mark) => mark.type === "line" && mark.look === "limit");
        if (limit) {
          [limit.x, limit.y] = [stretch(limit.x, before[0], now[0]), stretch(limit.y, before[1], now[1])];
          const away = (v, end) => (2 * v - end.low - end.high) / (end.high - end.low);
          points.selected = points.x.map((_, i) => i).filter(
            (i) => isNumber(points.x[i]) && away(points.x[i], now[0]) ** 2 + away(points.y[i], now[1]) ** 2 > 1);
        }
        [panel.x.label, panel.y.label] = [now[0].label, now[1].label];
      } else {
        panel.marks.filter((mark) => mark.names).forEach((mark, k) => {
          mark.y = now[k].values;
          mark.name = now[k].label;
        });
      }
      [this.components.x, this.components.y] = [x, y];
      for (const [which, value] of [["x", x], ["y", y]]) {
        this.article.querySelector(`select[data-control=${which}-component]`).value = String(value);
      }
      this.canvas.setAttribute("aria-label",
                               `${this.figure.title}: ${now[0].label} across, ${now[1].label} up`);
      this.article.querySelector(".alt").textContent = `${now[0].label} and ${now[1].label}`;
      this.redraw();
    }

    /** What ECharts is told, for the screen or for a picture of its own. */
    option(onPaper) {
      const colours = palette(onPaper);
      const context = { colours, plot: this, classes: classesOfColumn(), numbers: numbersOfColumn() };
      const { width, height } = this.size, panels = this.panels.length;
      const legend = this.legend(context);
      const top = legend ? 34 : 12, each = (height - top) / panels;
      const option = { animation: false, backgroundColor: onPaper ? "#ffffff" : "transparent",
                       textStyle: { fontFamily: "system-ui, DejaVu Sans, sans-serif", color: colours.ink },
                       toolbox: { show: false }, grid: [], xAxis: [], yAxis: [], series: [] };
      const size = { width, height: each };
      this.panels.forEach((panel, index) => {
        const x = axisOption(panel.x, panel, "x", index, colours, size);
        const y = axisOption(panel.y, panel, "y", index, colours, size);
        option.xAxis.push(x);
        option.yAxis.push(y);
        option.grid.push({ left: y.nameGap + 20, right: 18, top: top + index * each + 4,
                           height: each - 24 - x.nameGap });
        context.edge = x.max - (x.max - x.min) / 5;  // names of items beyond it would be cut off
        panel.marks.forEach((mark, k) => option.series.push(...seriesOf(context, mark, index, k)));
      });
      if (legend) {
        option.legend = legend.option;
        option.series.push(...legend.series);
      }
      const tinted = option.series.map((series, k) => (series.dimensions && series.dimensions[3] ? k : -1))
                                  .filter((k) => k >= 0);
      if (tinted.length > 0) option.visualMap = this.tint(context.numbers, tinted, colours);
      if (!onPaper) Object.assign(option, this.interaction(colours));
      return option;
    }

    interaction(colours) {
      const all = this.panels.map((_, k) => k);
      return {
        brush: { toolbox: [], seriesIndex: [], z: 100, throttleType: "debounce", throttleDelay: 50,
                 brushStyle: { borderWidth: 1, color: "rgba(120,140,160,.2)", borderColor: "rgba(120,140,160,.9)" } },
        dataZoom: [{ type: "inside", xAxisIndex: all, filterMode: "none", zoomOnMouseWheel: "ctrl" },
                   { type: "inside", yAxisIndex: all, filterMode: "none", zoomOnMouseWheel: "ctrl" }],
        tooltip: { trigger: this.hasItems ? "item" : "axis", confine: true, axisPointer: { type: "line" },
                   backgroundColor: colours.panel, borderColor: colours.line, textStyle: { color: colours.ink },
                   formatter: (found) => this.tip([].concat(found)) },
      };
    }

    /** Colour by numbers, and size besides: colour alone tells nothing to some. */
    tint(column, seriesIndex, colours) {
      const values = column.values.filter(isNumber);
      const min = values.reduce((a, b) => Math.min(a, b), Infinity);
      const max = values.reduce((a, b) => Math.max(a, b), -Infinity);
      return { type: "continuous", seriesIndex, dimension: 3, min, max: max > min ? max : min + 1, calculable: false,
               orient: "horizontal", right: 10, top: 0, itemWidth: 10, itemHeight: 90,
               text: [digits(max), shorten(column.name, 20) + "  " + digits(min)],
               textStyle: { color: colours.dim, fontSize: 11 },
               inRange: { color: ["#3b528b", "#21918c", "#5ec962", "#e8c11c"], symbolSize: [5, 12] },
               outOfRange: { color: colours.faint, symbolSize: 4 } };
    }

    /** Classes have series without items, so that each stands there once, whatever it is drawn by. */
    legend(context) {
      const { colours, classes, numbers } = context;
      const entries = [], series = [];
      const isColoured = classes && this.isOfRows;
      const labels = isColoured ? classes.labels : this.figure.classes;
      labels.slice(0, legendEntries).forEach((label, k) => {
        const look = classLook(k, colours), name = shorten(label, 24) + "\u200b".repeat(k);  // equal ones stay apart
        const isLine = this.panels[0].marks.some((mark) => mark.type === "line" && mark.look === "class");
        entries.push(isLine ? { name, itemStyle: noSymbol } : { name, icon: look.symbol });
        series.push({ id: "class-" + k, name, type: isLine ? "line" : "scatter", data: [],
                      symbol: isLine ? "none" : look.symbol, itemStyle: { color: look.colour },
                      lineStyle: { color: look.colour, type: dashes[k % dashes.length] } });
      });
      if (labels.length > legendEntries) {
        const name = `and ${labels.length - legendEntries} more`;
        entries.push({ name, icon: "none" });
        series.push({ id: "classes-more", name, type: "scatter", data: [] });
      }
      const seen = new Set(entries.map((entry) => entry.name));
      for (const mark of this.panels[0].marks) {
        if (!mark.name || mark.type === "rule" || seen.has(mark.name)) continue;
        seen.add(mark.name);
        entries.push({ name: mark.name, ...legendLook(mark, colours) });
      }
      if (entries.length === 0 && !(numbers && this.isOfRows)) return null;
      return { option: { type: "scroll", data: entries, top: 4, left: 8, right: numbers && this.isOfRows ? 230 : 8,
                         selectedMode: false, itemHeight: 9, itemGap: 12, itemWidth: 20,
                         textStyle: { color: colours.dim, fontSize: 11 }, pageTextStyle: { color: colours.dim } },
               series };
    }

    /**
     * Chosen rows on top of all marks, as diamonds with bold names, and a ring around the one under the pointer. They
     * are shapes on a layer of their own, which come and go without ECharts passing all items again.
     */
    drawOnTop(chart, colours) {
      const layer = new echarts.graphic.Group();
      const names = [];
      this.panels.forEach((panel, index) => {
        for (const mark of panel.marks.filter((one) => isOfRows(one) && one.type === "points")) {
          mark.x.forEach((x, i) => {
            const row = rowOf(mark, i);
            if ((row !== hovered && !chosen.has(row)) || !isNumber(x) || !isNumber(mark.y[i])) return;
            const place = chart.convertToPixel({ xAxisIndex: index, yAxisIndex: index }, [x, mark.y[i]]);
            if (!chart.containPixel({ gridIndex: index }, place)) return;
            if (chosen.has(row)) names.push({ row, place });
            layer.add(chosen.has(row) ? diamondAt(place, colours) : ringAt(place, colours));
            if (chosen.has(row) && row === hovered) layer.add(ringAt(place, colours));
          });
        }
      });
      if (names.length <= namedItems) addNames(names, layer, this.size.width, colours);
      chart.getZr().add(layer);
      return layer;
    }

    /** What a tooltip says: an element, since texts of ECharts' own would be markup. */
    tip(items) {
      const box = element("div", { class: "tip" });
      for (const item of items) this.tellItem(box, item);
      return box.childElementCount > 0 ? box : null;
    }

    tellItem(box, item) {
      const found = /^mark-(\d+)-(\d+)$/.exec(item.seriesId || "");
      if (!found) return;
      const panel = this.panels[found[1]], mark = panel.marks[found[2]], i = item.value[2];
      const name = itemName(mark, i);
      const at = (axis, value) =>
        (axis.kind === "category" ? namesOf(axis.categories)[Math.round(value)] || "" : digits(value));
      const lines = [[panel.x.label, at(panel.x, mark.x[i])], [mark.name || panel.y.label, at(panel.y, mark.y[i])]];
      if (mark.low && isNumber(mark.low[i])) {
        lines.push(["interval", `${digits(mark.low[i])} to ${digits(mark.high[i])}`]);
      }
      const row = rowOf(mark, i), column = page.columns[colourColumn];
      if (row >= 0 && column) lines.push([column.name, cellText(column, row)]);
      if (name) box.append(element("b", {}, shorten(name, 200)));
      for (const [label, value] of lines) {
        box.append(element("div", {}, `${shorten(label, 40)}: ${shorten(value, 60)}`));
      }
    }

    draw() {
      if (this.chart) return;
      this.measure();
      this.chart = echarts.init(this.canvas, null, { renderer: "canvas" });
      this.chart.setOption(this.option(false));
      this.chart.on("mouseover", (item) => this.point(item));
      this.chart.on("mouseout", () => hover(-1));
      this.chart.on("click", (item) => this.click(item));
      this.chart.on("brushEnd", (event) => this.take(event.areas));
      this.chart.on("datazoom", () => this.showChosen());
      this.showChosen();
    }

    measure() {
      this.size = { width: Math.max(200, this.canvas.clientWidth), height: this.height() };
    }

    redraw() {
      if (!this.chart) return;
      this.measure();
      this.chart.resize();
      this.chart.setOption(this.option(false), { notMerge: true });
      if (this.isArmed) this.arm();
      this.showChosen();
    }

    /** Only what says which rows are chosen: the rest of the drawing stays. */
    showChosen() {
      this.article.dataset.selected = String([...chosen].filter((row) => this.rows.has(row)).length);
      this.article.dataset.hovered = this.rows.has(hovered) ? rowNames[hovered] : "";
      if (!this.chart || !this.isOfRows) return;
      if (this.top) this.chart.getZr().remove(this.top);
      this.top = this.drawOnTop(this.chart, palette(false));
    }

    itemUnder(event) {
      const found = /^mark-(\d+)-(\d+)/.exec(event.seriesId || "");
      if (!found || !event.value) return -1;
      return rowOf(this.panels[found[1]].marks[found[2]], event.value[2]);
    }

    point(event) {
      const row = this.itemUnder(event);
      if (row >= 0) hover(row);
    }

    click(event) {
      const row = this.itemUnder(event);
      if (row >= 0 && !this.isArmed) toggle(row);
    }

    /** Arrows go from row to row, Enter and Space choose, Escape lets go. */
    key(event) {
      if (!this.isOfRows) return;
      const step = { ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1 }[event.key];
      if (step) hover((hovered + step + rowNames.length) % rowNames.length);
      else if ((event.key === "Enter" || event.key === " ") && hovered >= 0) toggle(hovered);
      else if (event.key === "Escape") select([]);
      else return;
      event.preventDefault();
    }

    /** The rows inside a lasso, whose corners come in pixels, of the panel where it began. */
    take(areas) {
      this.chart.dispatchAction({ type: "brush", areas: [] });
      if (areas.length === 0) return;
      const rows = areas.flatMap(({ range }) => this.panels.flatMap((panel, k) => {
        if (!this.chart.containPixel({ gridIndex: k }, range[0])) return [];
        const place = { xAxisIndex: k, yAxisIndex: k };
        return rowsInside(panel, range.map((corner) => this.chart.convertFromPixel(place, corner)));
      }));
      select([...new Set(rows)]);
    }

    lasso() {
      this.draw();
      this.isArmed = !this.isArmed;
      this.article.querySelector("[data-action=lasso]").setAttribute("aria-pressed", String(this.isArmed));
      this.arm();
    }

    arm() {
      this.chart.dispatchAction({ type: "takeGlobalCursor", key: "brush",
                                  brushOption: { brushType: this.isArmed ? "polygon" : false, brushMode: "single" } });
    }

    reset() {
      select([]);
      this.redraw();
    }

    /** The figure alone, in colours of paper, as text of an SVG file. */
    toSvg(width) {
      const size = this.size;
      this.size = { width: width || 640, height: this.height() };
      const chart = echarts.init(null, null, { renderer: "svg", ssr: true, ...this.size });
      try {
        chart.setOption(this.option(true));
        this.drawOnTop(chart, palette(true));
        return chart.renderToSVGString();
      } finally {
        chart.dispose();
        this.size = size;
      }
    }

    svg() { save(this.name + ".svg", "image/svg+xml", this.toSvg()); }

    png() {
      this.draw();
      const picture = this.chart.getDataURL({ pixelRatio: 2, backgroundColor: palette(false).panel });
      save(this.name + ".png", "image/png", picture);
    }

    /** The drawing in place of a canvas, which paper would cut off. */
    showOnPaper() {
      const drawing = new DOMParser().parseFromString(this.toSvg(680), "image/svg+xml").documentElement;
      drawing.setAttribute("viewBox", `0 0 680 ${this.height()}`);
      drawing.removeAttribute("style");
      this.print.replaceChildren(document.importNode(drawing, true));
    }

    /** What is drawn, as ECharts has it: a list of [x, y] for each mark, by the names of the marks' types. */
    items() {
      this.draw();
      return this.chart.getOption().series.filter((series) => /^mark-\d+-\d+$/.test(series.id)).map((series) => ({
        id: series.id, name: series.name, data: series.data.map((item) => (item.value || item).slice(0, 2)),
      }));
    }
  }

  /** Whether a place lies inside a polygon: a ray from it crosses the border an odd number of times. */
  function isInside(x, y, corners) {
    let inside = false;
    for (let i = 0, j = corners.length - 1; i < corners.length; j = i++) {
      const [xi, yi] = corners[i], [xj, yj] = corners[j];
      if (yi > y !== yj > y && x < (xj - xi) * (y - yi) / (yj - yi) + xi) inside = !inside;
    }
    return inside;
  }

  function rowsInside(panel, corners) {
    const rows = [];
    for (const mark of panel.marks.filter((one) => isOfRows(one) && one.type === "points")) {
      mark.x.forEach((x, i) => {
        if (isNumber(x) && isNumber(mark.y[i]) && isInside(x, mark.y[i], corners)) rows.push(rowOf(mark, i));
      });
    }
    return rows;
  }

  // ---- what is chosen, in all plots and the table

  /** Chooses these rows, from 0, and no others. */
  function select(rows) {
    chosen.clear();
    for (const row of rows) if (Number.isInteger(row) && row >= 0 && row < rowNames.length) chosen.add(row);
    showChosen();
  }

  function toggle(row) {
    if (!chosen.delete(row)) chosen.add(row);
    showChosen();
  }

  function showChosen() {
    for (const plot of plots.values()) plot.showChosen();
    document.querySelector("[data-count]").textContent = `${chosen.size} of ${rowNames.length} rows chosen`;
    showTable();
  }

  /** Rings a row in every plot; -1 for none. */
  function hover(row) {
    if (row === hovered) return;
    hovered = row;
    for (const plot of plots.values()) if (plot.isOfRows) plot.showChosen();
    for (const line of document.querySelectorAll("tr[data-row]")) {
      line.dataset.hovered = String(Number(line.dataset.row) === row);
    }
  }

  /** Shows other components, from 0, in a plot that has them. */
  function setComponents(name, x, y) {
    const plot = plots.get(name);
    if (!plot || !plot.components) throw new Error(`no components to choose in ${name}`);
    for (const a of [x, y]) if (!plot.components.list[a]) throw new Error(`no component ${a} in ${name}`);
    plot.takeComponents(x, y);
  }

  // ---- the table

  /** Rows to draw: chosen ones first, then those whose cells have the text that is looked for. */
  function rowsToShow() {
    const wanted = document.querySelector(".search").value.trim().toLowerCase();
    const rows = [...chosen].sort((a, b) => a - b).slice(0, shownRows);
    const texts = page.columns.filter((column) => column.kind === "text");
    const has = (row) => rowNames[row].toLowerCase().includes(wanted) ||
                         texts.some((column) => (column.values[row] || "").toLowerCase().includes(wanted));
    for (let row = 0; row < rowNames.length && rows.length < shownRows; ++row) {
      if (!chosen.has(row) && (wanted === "" || has(row))) rows.push(row);
    }
    return rows;
  }

  function tableLine(row) {
    const name = element("td", { class: "text", title: shorten(rowNames[row], 300) }, shorten(rowNames[row], 80));
    const line = element("tr", { "data-row": String(row), "aria-selected": String(chosen.has(row)), tabindex: "0",
                                 "data-hovered": String(row === hovered) }, name);
    for (const column of page.columns) {
      line.append(element("td", { class: column.kind }, shorten(cellText(column, row), 80)));
    }
    return line;
  }

  function showTable() {
    const rows = rowsToShow(), body = document.querySelector("tbody");
    const focused = document.activeElement?.dataset?.row;  // drawn anew, it loses the focus
    body.replaceChildren(...rows.map(tableLine));
    if (focused) body.querySelector(`tr[data-row="${focused}"]`)?.focus({ preventScroll: true });
    document.querySelector("[data-shown]").textContent = rows.length === rowNames.length ? "" :
      `${rows.length} of ${rowNames.length} rows; the others are found by the search`;
  }

  const lineOf = (event) => event.target.closest("tr[data-row]");

  function tableKey(event) {
    const line = lineOf(event);
    if (!line) return;
    if (event.key === "ArrowDown" && line.nextElementSibling) line.nextElementSibling.focus();
    else if (event.key === "ArrowUp" && line.previousElementSibling) line.previousElementSibling.focus();
    else if (event.key === "Enter" || event.key === " ") toggle(Number(line.dataset.row));
    else if (event.key === "Escape") select([]);
    else return;
    event.preventDefault();
  }

  /** The chosen rows, or all where none is, as CSV. */
  function selectionCsv() {
    const quote = (text) => (/[",\r\n]/.test(text) ? `"${text.replace(/"/g, '""')}"` : text);
    const rows = chosen.size > 0 ? [...chosen].sort((a, b) => a - b) : rowNames.map((_, row) => row);
    const cell = (column, row) => (column.values[row] === null ? "" : String(column.values[row]));
    const lines = [["row", ...page.columns.map((column) => column.name)]];
    for (const row of rows) lines.push([rowNames[row], ...page.columns.map((column) => cell(column, row))]);
    return lines.map((line) => line.map(quote).join(",") + "\n").join("");
  }

  // ---- the page

  function buildHead() {
    const dark = element("button", { type: "button", "data-action": "theme", onclick: () => setTheme(
      document.documentElement.dataset.theme === "dark" ? "light" : "dark") }, "Light or dark");
    const facts = element("dl", {});
    for (const [label, value] of page.facts) {
      facts.append(element("div", {}, element("dt", {}, label), element("dd", {}, value)));
    }
    const head = [element("header", {}, element("h1", {}, page.title), dark), facts];
    for (const text of page.summary) head.push(element("p", {}, text));
    if (page.text) {
      head.push(element("details", {}, element("summary", {}, "In numbers"), element("pre", {}, page.text)));
    }
    if (page.notes.length > 0) {
      const notes = page.notes.map((note) => element("li", {}, note));
      head.push(element("h2", {}, "What to know"), element("ul", {}, ...notes));
    }
    if (page.command) head.push(element("h2", {}, "To repeat it"), element("pre", {}, page.command));
    return head;
  }

  function buildTools() {
    const colour = element("select", { "data-control": "colour", onchange: (event) => {
      colourColumn = Number(event.target.value);
      for (const plot of plots.values()) if (plot.isOfRows) plot.redraw();
    } }, element("option", { value: "-1" }, "as in the figures"));
    page.columns.forEach((column, k) => {
      colour.append(element("option", { value: String(k) }, shorten(column.name, 60)));
    });
    const button = (action, text, onclick) =>
      element("button", { type: "button", "data-action": action, onclick }, text);
    return element("div", { class: "tools", role: "toolbar", "aria-label": "Rows" },
                   element("label", {}, "Colour rows by", colour),
                   element("span", { "data-count": "", role: "status" }, ""),
                   button("clear", "Choose none", () => select([])),
                   button("csv", "CSV of the rows", () => save("rows.csv", "text/csv", selectionCsv())));
  }

  function buildTable() {
    const head = element("tr", {}, element("th", { class: "text", scope: "col" }, "row"));
    for (const column of page.columns) {
      head.append(element("th", { class: column.kind, scope: "col", title: shorten(column.name, 300) },
                          shorten(column.name, 40)));
    }
    const search = element("input", { class: "search", type: "search", placeholder: "Search rows",
                                      "aria-label": "Search rows", oninput: showTable });
    const body = element("tbody", {
      onclick: (event) => lineOf(event) && toggle(Number(lineOf(event).dataset.row)),
      onmouseover: (event) => lineOf(event) && hover(Number(lineOf(event).dataset.row)),
      onmouseleave: () => hover(-1),
      onkeydown: tableKey,
    });
    return [element("h2", {}, "Rows"), search, element("p", { class: "note", "data-shown": "" }, ""),
            element("div", { class: "rows" }, element("table", { "aria-label": "Rows" },
                                                      element("thead", {}, head), body))];
  }

  function setTheme(theme) {
    document.documentElement.dataset.theme = theme;
    for (const plot of plots.values()) plot.redraw();
  }

  /** Draws plots as they come into view, and those already there at once. */
  function drawInView() {
    const observer = new IntersectionObserver((entries) => {
      for (const entry of entries.filter((one) => one.isIntersecting)) {
        plots.get(entry.target.dataset.plot).draw();
        observer.unobserve(entry.target);
      }
      document.documentElement.dataset.ready = "true";
    }, { rootMargin: "200px" });
    for (const plot of plots.values()) observer.observe(plot.article);
    if (plots.size === 0) document.documentElement.dataset.ready = "true";
  }

  /** Draws again what has another width; heights follow from widths. */
  function followWidths() {
    const observer = new ResizeObserver((entries) => {
      for (const entry of entries) {
        const plot = plots.get(entry.target.parentElement.dataset.plot);
        const width = entry.target.clientWidth;
        if (plot.chart && width > 0 && Math.abs(width - plot.size.width) > 1) plot.redraw();
      }
    });
    for (const plot of plots.values()) observer.observe(plot.canvas);
  }

  function build() {
    const root = document.querySelector("main");
    const holder = element("div", { class: "plots" });
    for (const figure of drawn.figures) {
      const plot = new Plot(figure);
      plots.set(figure.name, plot);
      holder.append(plot.article);
    }
    root.append(...buildHead());
    if (rowNames.length > 0) root.append(buildTools());
    root.append(holder);
    if (rowNames.length > 0) {
      root.append(...buildTable());
      showChosen();
    }
    root.append(element("div", { class: "paper", hidden: "" }));
    root.append(element("details", {}, element("summary", {}, "Drawn by Apache ECharts: notices"),
                        element("pre", {}, document.getElementById("kalmia-notice").content.textContent.trim())));
  }

  const dark = matchMedia("(prefers-color-scheme: dark)");
  document.documentElement.dataset.theme = dark.matches ? "dark" : "light";
  document.title = page.title;
  build();
  dark.addEventListener("change", () => setTheme(dark.matches ? "dark" : "light"));
  addEventListener("beforeprint", () => { for (const plot of plots.values()) plot.showOnPaper(); });
  addEventListener("afterprint", () => { for (const plot of plots.values()) plot.print.replaceChildren(); });

  window.kalmiaReport = Object.freeze({
    version: page.formatVersion,
    plots: Object.fromEntries([...plots].map(([name, plot]) =>
      [name, { kind: plot.figure.kind, items: () => plot.items() }])),
    rows: rowNames,
    select,
    selection: () => [...chosen].sort((a, b) => a - b),
    hover,
    setComponents,
    toSvg: (name) => {
      if (!plots.has(name)) throw new Error(`no plot ${name}`);
      return plots.get(name).toSvg();
    },
  });
  drawInView();
  followWidths();
})();
