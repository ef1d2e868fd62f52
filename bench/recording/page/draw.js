// Drawing on a canvas, whose width is the span that is looked at.
"use strict";

let colours = {};

function readColours() {
  const style = getComputedStyle(document.documentElement);
  const read = (name) => style.getPropertyValue("--" + name).trim();
  colours = {};
  for (const name of ["text", "dim", "grid", "plot", "good", "bad", "warn", "event", "box", "host", "key"])
    colours[name] = read(name);
  colours.groups = [0, 1, 2, 3, 4, 5, 6, 7].map((number) => read("group" + number));
}

const groupNames = [...new Set(values.map((series) => groupOf(series.name)))];

/// `climate` of `climate.left`.
function groupOf(name) {
  return name.split(".")[0];
}

function colourOf(series) {
  return colours.groups[groupNames.indexOf(groupOf(series.name)) % colours.groups.length];
}

/// A context in CSS pixels, wiped. Null for a canvas that is not laid out.
function contextOf(canvas) {
  const width = canvas.clientWidth;
  const height = canvas.clientHeight;
  if (!width || !height)
    return null;
  const ratio = window.devicePixelRatio || 1;
  if (canvas.width !== Math.round(width * ratio) || canvas.height !== Math.round(height * ratio)) {
    canvas.width = Math.round(width * ratio);
    canvas.height = Math.round(height * ratio);
  }
  const context = canvas.getContext("2d");
  context.setTransform(ratio, 0, 0, ratio, 0, 0);
  context.clearRect(0, 0, width, height);
  return context;
}

/// Where the span from..to lies on a width.
function scale(from, to, width) {
  const factor = width / (to - from);
  return (time) => (time - from) * factor;
}

const kFont = "10px ui-monospace, 'DejaVu Sans Mono', Menlo, Consolas, monospace";

/// The distance of the lines of a grid, in microseconds, for at most `count` of them.
function gridStep(span, count) {
  const second = 1e6;
  const nice = [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 21600, 86400];
  const least = span / count;
  if (least < second) {
    const power = 10 ** Math.floor(Math.log10(Math.max(least, 1)));
    return [1, 2, 5, 10].map((factor) => factor * power).find((step) => step >= least - 1e-9);
  }
  const found = nice.find((step) => step * second >= least);
  return found ? found * second : Math.ceil(least / 86400e6) * 86400e6;
}

function gridTimes(width) {
  const step = gridStep(view.to - view.from, Math.max(2, width / 90));
  const times = [];
  for (let time = Math.ceil(view.from / step) * step; time <= view.to; time += step)
    times.push(time);
  return {step, times};
}

function drawGrid(context, width, height) {
  const x = scale(view.from, view.to, width);
  context.fillStyle = colours.grid;
  for (const time of gridTimes(width).times)
    context.fillRect(Math.round(x(time)), 0, 1, height);
}

function drawAxis(canvas) {
  const context = contextOf(canvas);
  if (!context)
    return;
  const width = canvas.clientWidth;
  const x = scale(view.from, view.to, width);
  const {step, times} = gridTimes(width);
  context.font = kFont;
  context.textBaseline = "middle";
  for (const time of times) {
    const text = timeText(time, step);
    const at = Math.round(x(time));
    context.fillStyle = colours.dim;
    context.fillRect(at, canvas.clientHeight - 4, 1, 4);
    context.fillStyle = colours.text;
    const left = at - context.measureText(text).width / 2;
    if (left > -4 && left + context.measureText(text).width < width + 4)
      context.fillText(text, left, canvas.clientHeight / 2 - 2);
  }
}

/// Calls `part(value, left, right, time)` for each stretch of a series that is in the picture.
function eachStretch(series, width, part) {
  const x = scale(view.from, view.to, width);
  for (let i = Math.max(0, indexAt(series.t, view.from)); i < series.t.length; ++i) {
    if (series.t[i] > view.to)
      break;
    const end = i + 1 < series.t.length ? series.t[i + 1] : whole.to;
    part(series.v[i], Math.max(-2, x(series.t[i])), Math.min(width + 2, x(end)));
  }
}

function fitText(context, text, width) {
  if (context.measureText(text).width <= width)
    return text;
  let length = text.length;
  while (length > 0 && context.measureText(text.slice(0, length) + "\u2026").width > width)
    --length;
  return length > 0 ? text.slice(0, length) + "\u2026" : "";
}

/// A stretch with its word in it, as for a text or a number that is none.
function drawWord(context, word, left, right, top, height, colour) {
  context.globalAlpha = 0.14;
  context.fillStyle = colour;
  context.fillRect(left, top, Math.max(1, right - left), height);
  context.globalAlpha = 1;
  context.fillRect(left, top, 1, height);
  const visible = Math.max(left, 0);
  const text = right - visible > 14 ? fitText(context, word, right - visible - 8) : "";
  if (text) {
    context.fillStyle = colours.text;
    context.fillText(text, visible + 5, top + height / 2 + 1);
  }
}

function drawNumber(context, series, width, height) {
  const colour = colourOf(series);
  const top = 6;
  const tall = height - 13;
  const y = (value) => top + tall - (value - series.low) / (series.high - series.low) * tall;
  const line = new Path2D();
  const area = new Path2D();
  let open = false;
  eachStretch(series, width, (value, left, right) => {
    if (typeof value !== "number") {
      open = false;
      drawWord(context, value, left, right, top - 3, tall + 6, colours.dim);
      return;
    }
    const at = y(value);
    if (open)
      line.lineTo(left, at);
    else
      line.moveTo(left, at);
    line.lineTo(right, at);
    area.rect(left, at, right - left, height - at);
    open = true;
  });
  context.fillStyle = colour;
  context.globalAlpha = 0.1;
  context.fill(area);
  context.globalAlpha = 1;
  context.strokeStyle = colour;
  context.lineWidth = 1.4;
  context.lineJoin = "round";
  context.stroke(line);
  context.fillStyle = colours.dim;
  outlined(context, String(Math.round(series.high * 1e3) / 1e3), 3, 7);
  outlined(context, String(Math.round(series.low * 1e3) / 1e3), 3, height - 7);
}

/// Text that stays readable over a line.
function outlined(context, text, left, middle) {
  context.lineWidth = 3;
  context.strokeStyle = colours.plot;
  context.strokeText(text, left, middle);
  context.fillText(text, left, middle);
}

function drawSwitch(context, series, width, height) {
  const colour = colourOf(series);
  context.fillStyle = colour;
  eachStretch(series, width, (value, left, right) => {
    if (value) {
      context.globalAlpha = 0.75;
      context.fillRect(left, 4, Math.max(1, right - left), height - 8);
    } else {
      context.globalAlpha = 0.5;
      context.fillRect(left, height - 5, Math.max(1, right - left), 1);
    }
  });
  context.globalAlpha = 1;
}

function drawText(context, series, width, height, colour = colourOf(series)) {
  eachStretch(series, width, (value, left, right) =>
    drawWord(context, valueWord(series, value), left, right, 3, height - 6, colour));
}

function drawLink(context, width, height) {
  eachStretch(link, width, (value, left, right) => {
    context.fillStyle = value ? colours.good : colours.bad;
    context.globalAlpha = value ? 0.55 : 0.9;
    context.fillRect(left, 5, Math.max(1.5, right - left), height - 10);
    context.globalAlpha = 1;
    if (!value) {
      context.fillStyle = colours.bad;
      context.fillRect(left, 0, 1.5, height);
    }
  });
}

// Held, then held long: the bar becomes solid where the long press begins.
function drawKey(context, series, width, top, height) {
  context.fillStyle = colours.key;
  eachStretch(series, width, (value, left, right) => {
    if (!value)
      return;
    context.globalAlpha = value > 1 ? 1 : 0.55;
    context.fillRect(left, top + 3, Math.max(1.5, right - left), height - 6);
  });
  context.globalAlpha = 1;
}

const kMarkColours = {fault: "bad", repair: "warn", event: "event"};

function drawMarks(context, mark, width, top, height) {
  const x = scale(view.from, view.to, width);
  context.fillStyle = colours[kMarkColours[mark.kind]];
  context.globalAlpha = mark.kind === "event" ? 0.65 : 1;
  for (let i = Math.max(0, indexAt(mark.t, view.from - mark.width)); i < mark.t.length; ++i) {
    if (mark.t[i] > view.to)
      break;
    const left = x(mark.t[i]);
    // Marks that were joined go as far as the last of them.
    const right = mark.d ? x(mark.t[i] + mark.d[i]) : left;
    context.fillRect(Math.min(left, width - 2), top + 2, Math.max(2, right - left), height - 4);
  }
  context.globalAlpha = 1;
}

/// Bytes a second: the mean of a stretch as an area, its busiest second as a line.
function drawTraffic(context, from, to, width, height) {
  const traffic = recording.traffic;
  const x = scale(from, to, width);
  const most = Math.max(1, ...[traffic.boxPeak, traffic.hostPeak].map((list) =>
    list.reduce((a, b) => Math.max(a, b), 0)));
  const y = (value) => height - value / most * (height - 6);
  const first = Math.max(0, Math.floor(from / traffic.width));
  const last = Math.min(traffic.box.length - 1, Math.floor(to / traffic.width));
  for (const side of ["box", "host"]) {
    const mean = new Path2D();
    const peak = new Path2D();
    for (let i = first; i <= last; ++i) {
      const left = x(i * traffic.width);
      const right = Math.max(left + 1, x((i + 1) * traffic.width));
      mean.rect(left, y(traffic[side][i]), right - left, height);
      peak.lineTo(left, y(traffic[side + "Peak"][i]));
      peak.lineTo(right, y(traffic[side + "Peak"][i]));
    }
    context.globalAlpha = side === "box" ? 0.35 : 0.5;
    context.fillStyle = colours[side];
    context.fill(mean);
    context.globalAlpha = 1;
    context.strokeStyle = colours[side];
    context.lineWidth = 1;
    context.stroke(peak);
  }
  return most;
}

/// The whole recording: its traffic, what went wrong, and the span that is looked at.
function drawOverview(canvas) {
  const context = contextOf(canvas);
  if (!context)
    return;
  const width = canvas.clientWidth;
  const height = canvas.clientHeight;
  drawTraffic(context, whole.from, whole.to, width, height);
  const x = scale(whole.from, whole.to, width);
  context.fillStyle = colours.bad;
  for (const mark of recording.marks)
    if (mark.kind === "fault")
      for (const time of mark.t)
        context.fillRect(Math.min(x(time), width - 1.5), 0, 1.5, 7);
  if (view.from > whole.from || view.to < whole.to) {
    context.fillStyle = colours.plot;
    context.globalAlpha = 0.65;
    context.fillRect(0, 0, x(view.from), height);
    context.fillRect(x(view.to), 0, width - x(view.to), height);
    context.globalAlpha = 1;
    context.strokeStyle = colours.text;
    context.lineWidth = 1;
    context.strokeRect(x(view.from) + 0.5, 0.5, Math.max(1, x(view.to) - x(view.from) - 1), height - 1);
  }
}
