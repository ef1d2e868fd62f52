// Lanes below each other on one axis of time, and the mouse over them.
"use strict";

const lanes = [];

/// A lane: its label, and what draws it. `readout(time)` is what its label tells at the cursor.
function addLane(parent, name, height, className, draw, readout) {
  const box = element("div", "lane " + className);
  const label = element("div", "label");
  label.append(element("span", "lane-name", name));
  const value = element("span", "lane-value");
  label.append(value);
  const canvas = element("canvas");
  canvas.style.height = height + "px";
  box.append(label, canvas);
  box.dataset.lane = name;
  parent.append(box);
  lanes.push({box, canvas, value, draw, readout, seen: false});
}

const rowHeight = 15;

/// A lane with a row for each of `rows`, which are {name, draw(context, width, top, height)}.
function addRows(parent, rows, className) {
  const box = element("div", "lane rows " + className);
  const label = element("div", "label");
  for (const row of rows) {
    const line = element("div", "row");
    line.append(element("span", "lane-name", row.name), element("span", "lane-value " + row.kind, row.count));
    label.append(line);
  }
  const canvas = element("canvas");
  canvas.style.height = rows.length * rowHeight + "px";
  box.append(label, canvas);
  parent.append(box);
  lanes.push({box, canvas, value: null, seen: false, draw: (context, width) => {
    rows.forEach((row, number) => row.draw(context, width, number * rowHeight, rowHeight));
  }});
}

function buildLanes() {
  const parent = document.getElementById("lanes");
  parent.textContent = "";
  lanes.length = 0;
  addLane(parent, "traffic, bytes/s", 44, "traffic", (context, width, height) => {
    const most = drawTraffic(context, view.from, view.to, width, height);
    context.fillStyle = colours.dim;
    outlined(context, String(Math.round(most)), 3, 7);
  }, trafficText);
  if (scenario)
    addLane(parent, "scenario", 20, "scenario",
      (context, width, height) => drawText(context, scenario, width, height, colours.event));
  if (link)
    addLane(parent, "link", 18, "link", (context, width, height) => drawLink(context, width, height),
      (time) => indexAt(link.t, time) < 0 ? "none yet" : link.v[indexAt(link.t, time)] ? "up" : "lost");
  const markRow = (mark) => ({name: mark.name, kind: mark.kind, count: mark.count.toLocaleString("en"),
    draw: (context, width, top, height) => drawMarks(context, mark, width, top, height)});
  const wrong = recording.marks.filter((mark) => mark.kind !== "event");
  if (wrong.length)
    addRows(parent, wrong.map(markRow), "faults");
  if (keys.length)
    addRows(parent, keys.map((key) => ({name: key.name, kind: "", count: "",
      draw: (context, width, top, height) => drawKey(context, key, width, top, height)})), "keys");
  const signals = recording.marks.filter((mark) => mark.kind === "event");
  if (signals.length)
    addRows(parent, signals.map(markRow), "signals");
  for (const series of values) {
    if (!view.chosen.has(series.name))
      continue;
    // A number that never was another needs no scale: it is a word.
    const kind = series.kind === "number" && !(series.high > series.low) ? "text" : series.kind;
    const [height, draw] = {switch: [20, drawSwitch], text: [20, drawText], number: [46, drawNumber]}[kind];
    addLane(parent, series.name, height, kind,
      (context, width, tall) => draw(context, series, width, tall),
      (time) => textAt(series, time));
  }
  if (!lanes.length)
    parent.append(element("p", "nothing", "Nothing to plot."));
  const watch = new IntersectionObserver((entries) => {
    for (const entry of entries) {
      const lane = lanes.find((one) => one.box === entry.target);
      if (lane) {
        lane.seen = entry.isIntersecting;
        if (lane.seen)
          drawLane(lane);
      }
    }
  }, {root: document.getElementById("scroll"), rootMargin: "100px"});
  for (const lane of lanes)
    watch.observe(lane.box);
  readLanes();
}

function drawLane(lane) {
  const context = contextOf(lane.canvas);
  if (!context)
    return;
  const width = lane.canvas.clientWidth;
  const height = lane.canvas.clientHeight;
  drawGrid(context, width, height);
  context.font = kFont;
  context.textBaseline = "middle";
  lane.draw(context, width, height);
}

function drawLanes() {
  drawOverview(document.getElementById("overview"));
  drawAxis(document.getElementById("axis"));
  for (const lane of lanes)
    if (lane.seen)
      drawLane(lane);
}

function trafficText(time) {
  const traffic = recording.traffic;
  const at = Math.floor(time / traffic.width);
  return at < traffic.box.length ? Math.round(traffic.box[at]) + " \u2193 " + Math.round(traffic.host[at]) + " \u2191" : "";
}

function readLanes() {
  for (const lane of lanes) {
    const text = view.cursor === null || !lane.readout ? "" : lane.readout(view.cursor);
    if (lane.value && lane.value.textContent !== text)
      lane.value.textContent = text;
  }
  placeLines();
}

// Where the picture is on the screen: all canvases stand below each other.
function plotArea() {
  return document.getElementById("axis").getBoundingClientRect();
}

function placeLines() {
  const area = plotArea();
  for (const [id, time] of [["cursor", view.cursor], ["pin", view.pin]]) {
    const line = document.getElementById(id);
    line.hidden = time === null || time < view.from || time > view.to;
    if (line.hidden)
      continue;
    line.style.left = area.left + (time - view.from) / (view.to - view.from) * area.width + "px";
    line.style.top = area.top + "px";
    line.style.height = Math.max(0, lanesBottom() - area.top) + "px";
  }
}

function lanesBottom() {
  const bottom = document.getElementById("lanes").getBoundingClientRect().bottom;
  return Math.min(bottom, document.getElementById("scroll").getBoundingClientRect().bottom);
}

/// The marks within a few pixels of a time, those of a kind as one, faults first.
function marksAt(time) {
  const reach = 4 * (view.to - view.from) / plotArea().width;
  const found = [];
  for (const mark of recording.marks) {
    const here = {mark, first: -1, count: 0};
    for (let i = Math.max(0, indexAt(mark.t, time - reach)); i < mark.t.length && mark.t[i] <= time + reach; ++i) {
      if (mark.t[i] + (mark.d ? mark.d[i] : 0) < time - reach)
        continue;
      here.first = here.first < 0 ? i : here.first;
      here.count += mark.n ? mark.n[i] : 1;
    }
    if (here.count > 0)
      found.push({time: mark.t[here.first], kind: mark.kind,
        text: mark.name + "  " + (here.count > 1 ? "\u00d7 " + here.count : mark.text[here.first])});
  }
  return found;
}

function showTip(x, y) {
  const tip = document.getElementById("tip");
  const marks = view.cursor === null ? [] : marksAt(view.cursor);
  tip.hidden = marks.length === 0;
  if (tip.hidden)
    return;
  tip.textContent = "";
  for (const mark of marks) {
    const line = element("div", mark.kind);
    line.append(element("span", "when", timeText(mark.time, 1e3)), element("span", "", mark.text));
    tip.append(line);
  }
  const right = x + 18 + tip.offsetWidth > innerWidth;
  tip.style.left = (right ? x - 14 - tip.offsetWidth : x + 14) + "px";
  tip.style.top = Math.min(y + 14, innerHeight - tip.offsetHeight - 6) + "px";
}

function hideTip() {
  document.getElementById("tip").hidden = true;
}

function listenToMouse() {
  const scroll = document.getElementById("scroll");
  const band = document.getElementById("band");
  const timeAt = (x) => {
    const area = plotArea();
    const share = Math.min(1, Math.max(0, (x - area.left) / area.width));
    return view.from + share * (view.to - view.from);
  };
  const inPlots = (event) => event.target.closest("#lanes canvas, #axis");
  let drag = null;

  scroll.addEventListener("mousemove", (event) => {
    if (!inPlots(event) && !drag)
      return hideTip();
    setCursor(timeAt(event.clientX));
    if (drag === null || Math.abs(event.clientX - drag) < 4) {
      showTip(event.clientX, event.clientY);
      return;
    }
    hideTip();
    const area = plotArea();
    band.hidden = false;
    band.style.left = Math.max(area.left, Math.min(drag, event.clientX)) + "px";
    band.style.width = Math.abs(event.clientX - drag) + "px";
    band.style.top = area.top + "px";
    band.style.height = lanesBottom() - area.top + "px";
  });
  scroll.addEventListener("mousedown", (event) => {
    if (event.button === 0 && inPlots(event)) {
      drag = event.clientX;
      event.preventDefault();
    }
  });
  addEventListener("mouseup", (event) => {
    if (drag === null)
      return;
    const begin = drag;
    drag = null;
    band.hidden = true;
    if (Math.abs(event.clientX - begin) >= 4)
      showSpan(Math.min(timeAt(begin), timeAt(event.clientX)), Math.max(timeAt(begin), timeAt(event.clientX)));
    else
      setPin(Math.round(timeAt(event.clientX)));
  });
  scroll.addEventListener("dblclick", (event) => {
    if (inPlots(event)) {
      setPin(null);
      showSpan(whole.from, whole.to);
    }
  });
  scroll.addEventListener("mouseleave", hideTip);
  scroll.addEventListener("wheel", (event) => {
    if (!event.target.closest("canvas"))
      return;
    const length = view.to - view.from;
    const sideways = event.shiftKey ? event.deltaY + event.deltaX : event.deltaX;
    if (event.ctrlKey || event.metaKey)
      zoom(1.0015 ** event.deltaY, timeAt(event.clientX));
    else if (sideways)
      showSpan(view.from + sideways / 1000 * length, view.to + sideways / 1000 * length);
    else
      return;
    event.preventDefault();
  }, {passive: false});
  scroll.addEventListener("scroll", () => { placeLines(); hideTip(); });

  // The overview moves the span, or draws a new one when all is shown.
  const overview = document.getElementById("overview");
  const move = (event) => {
    const area = overview.getBoundingClientRect();
    const time = (event.clientX - area.left) / area.width * (whole.to - whole.from);
    const length = Math.min(view.to - view.from, (whole.to - whole.from) / 10);
    showSpan(time - length / 2, time + length / 2);
  };
  overview.addEventListener("pointerdown", (event) => {
    overview.setPointerCapture(event.pointerId);
    move(event);
  });
  overview.addEventListener("pointermove", (event) => {
    if (event.buttons & 1)
      move(event);
  });
  overview.addEventListener("dblclick", () => showSpan(whole.from, whole.to));
}
