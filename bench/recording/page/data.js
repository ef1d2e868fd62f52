// The recording as the exporter wrote it: times in whole microseconds since its first line, each as
// the difference to the one before.
"use strict";

const recording = JSON.parse(document.getElementById("recording").textContent || "null") || {
  title: "No recording", start: 0, span: 0, model: 1, ports: [], problem: "", totals: [], series: [],
  marks: [], traffic: {width: 1e6, box: [], host: [], boxPeak: [], hostPeak: []}, frames: [], events: [],
};

/// Turns differences into times, in place.
function sumUp(times) {
  for (let i = 1; i < times.length; ++i)
    times[i] += times[i - 1];
}

/// The index of the last time that is not after `time`; -1 when all are.
function indexAt(times, time) {
  let low = 0;
  let high = times.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (times[middle] <= time)
      low = middle + 1;
    else
      high = middle;
  }
  return low - 1;
}

// A value is a number, or a word where no number is: "low", "none".
for (const series of recording.series) {
  sumUp(series.t);
  const numbers = series.v.filter((value) => typeof value === "number");
  series.low = numbers.reduce((a, b) => Math.min(a, b), Infinity);
  series.high = numbers.reduce((a, b) => Math.max(a, b), -Infinity);
}
for (const mark of recording.marks)
  sumUp(mark.t);

const seriesByName = new Map(recording.series.map((series) => [series.name, series]));
const values = recording.series.filter((series) => ["switch", "number", "text"].includes(series.kind));
const keys = recording.series.filter((series) => series.kind === "key");
const scenario = recording.series.find((series) => series.kind === "scenario");
const link = recording.series.find((series) => series.kind === "link");

function valueWord(series, value) {
  if (value === undefined)
    return "";
  if (typeof value === "string")
    return value;
  if (series.kind === "switch")
    return series.words[value] || (value ? "on" : "off");
  const text = String(Math.round(value * 1e6) / 1e6);
  return series.unit ? text + " " + series.unit : text;
}

/// What a series has at a time, as text. In a series that was reduced, the place between the points
/// that were kept is not known: the text is the span of values then.
function textAt(series, time) {
  const at = indexAt(series.t, time);
  if (series.width === 0 || at < 0)
    return valueWord(series, series.v[at]);
  const begin = Math.floor(time / series.width) * series.width;
  let low = Infinity;
  let high = -Infinity;
  for (let i = Math.max(0, indexAt(series.t, begin)); i < series.t.length; ++i) {
    if (series.t[i] >= begin + series.width)
      break;
    const value = series.v[i];
    if (typeof value !== "number")
      return "\u2248 " + valueWord(series, series.v[at]);
    low = Math.min(low, value);
    high = Math.max(high, value);
  }
  if (!(low < high))
    return valueWord(series, series.v[at]);
  return "\u2248 " + valueWord({kind: "number", unit: ""}, low) + "\u2026" +
    valueWord({kind: "number", unit: series.unit}, high);
}

/// `1:02:03.004`, as exact as `step` microseconds ask for.
function timeText(time, step) {
  const digits = step >= 1e6 ? 0 : Math.min(6, Math.ceil(-Math.log10(step / 1e6) - 1e-9));
  const scale = 10 ** digits;
  const total = Math.round(Math.abs(time) / 1e6 * scale);
  const seconds = Math.floor(total / scale);
  const fraction = digits ? "." + String(total % scale).padStart(digits, "0") : "";
  const two = (number) => String(number).padStart(2, "0");
  const hours = Math.floor(seconds / 3600);
  const minutes = Math.floor(seconds / 60) % 60;
  const head = hours ? hours + ":" + two(minutes) + ":" : minutes + ":";
  return (time < 0 ? "\u2212" : "") + head + two(seconds % 60) + fraction;
}

/// `1.5 s`, `31 ms`: three digits that matter.
function spanText(span) {
  const size = Math.abs(span);
  if (size >= 60e6)
    return timeText(span, 1e6);
  if (size >= 1e6)
    return (span / 1e6).toPrecision(4) + " s";
  return size >= 1e3 ? (span / 1e3).toPrecision(4) + " ms" : span + " \u00b5s";
}

/// The time of day of the recording's clock, in UTC; empty for one that does not count from 1970.
function clockText(time) {
  const milliseconds = (recording.start + time) / 1e3;
  if (recording.start < 1e14 || milliseconds > 8.64e15)
    return "";
  return new Date(milliseconds).toISOString().replace("T", " ").replace("Z", " UTC");
}

/// An element with a class and a text; text never becomes markup.
function element(tag, className, text) {
  const made = document.createElement(tag);
  if (className)
    made.className = className;
  if (text !== undefined)
    made.textContent = text;
  return made;
}
