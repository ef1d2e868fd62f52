// What is looked at: a span of time, a cursor, a pin to measure from, and the values chosen by name.
// It is in the address behind #, so that a link shows the same.
"use strict";

const whole = {from: 0, to: Math.max(recording.span, 1000)};
const view = {from: whole.from, to: whole.to, cursor: null, pin: null, chosen: new Set()};

const listeners = [];
let waiting = null;

/// `draw({span, cursor, chosen})` with what changed, at most once for each picture.
function onChange(draw) {
  listeners.push(draw);
}

function changed(what) {
  if (!waiting) {
    waiting = {};
    requestAnimationFrame(() => {
      const changes = waiting;
      waiting = null;
      for (const draw of listeners)
        draw(changes);
      writeAddress();
    });
  }
  waiting[what] = true;
}

const kShortest = 100; // us

function showSpan(from, to) {
  const most = whole.to - whole.from;
  const length = Math.min(most, Math.max(kShortest, to - from));
  view.from = Math.min(Math.max(whole.from, from), whole.to - length);
  view.to = view.from + length;
  changed("span");
}

/// Zooms by `factor`, and what is at `time` stays where it is.
function zoom(factor, time) {
  const length = Math.min(whole.to - whole.from, Math.max(kShortest, (view.to - view.from) * factor));
  const share = (time - view.from) / (view.to - view.from);
  showSpan(time - share * length, time + (1 - share) * length);
}

function setCursor(time) {
  view.cursor = time === null ? null : Math.round(Math.min(Math.max(time, whole.from), whole.to));
  changed("cursor");
}

function setPin(time) {
  view.pin = time;
  changed("cursor");
}

function choose(names) {
  view.chosen = new Set(names);
  changed("chosen");
}

/// Shows a moment, with what is around it when it is not in the picture.
function goTo(time) {
  const length = view.to - view.from;
  if (time < view.from || time > view.to || length === whole.to - whole.from)
    showSpan(time - Math.min(length, 5e6), time + Math.min(length, 5e6));
  setCursor(time);
}

const isChanged = (series) => series.changes > 0;

// Seconds, so that an address can be written by hand: #from=1.5&to=3&at=2&show=door.rear,climate.fan
let writes = 0;
function writeAddress() {
  const parts = [];
  if (view.from !== whole.from || view.to !== whole.to)
    parts.push("from=" + view.from / 1e6, "to=" + view.to / 1e6);
  if (view.cursor !== null)
    parts.push("at=" + view.cursor / 1e6);
  if (values.some((series) => isChanged(series) !== view.chosen.has(series.name)))
    parts.push("show=" + [...view.chosen].map(encodeURIComponent).join(","));
  // Browsers let a page do this some hundred times a minute; the last one counts.
  clearTimeout(writes);
  writes = setTimeout(() => history.replaceState(null, "", "#" + parts.join("&")), 300);
}

function readAddress() {
  const given = new Map(location.hash.slice(1).split("&").map((part) => part.split("=")));
  const time = (name) => given.has(name) ? Number(given.get(name)) * 1e6 : NaN;
  if (time("from") < time("to"))
    showSpan(time("from"), time("to"));
  if (!Number.isNaN(time("at")))
    setCursor(time("at"));
  choose(given.has("show")
    ? given.get("show").split(",").map(decodeURIComponent).filter((name) => seriesByName.has(name))
    : values.filter(isChanged).map((series) => series.name));
}
