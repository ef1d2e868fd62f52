// The page put together.
"use strict";

const byId = (id) => document.getElementById(id);

function buildHead() {
  document.title = recording.title;
  byId("title").textContent = recording.title;
  const parts = [clockText(0), spanText(recording.span), recording.ports.join(", "), "model " + recording.model];
  byId("subtitle").textContent = parts.filter((part) => part).join("  \u00b7  ");
  byId("problem").textContent = recording.problem;
  byId("problem").hidden = !recording.problem;
  for (const [name, count, isBad] of recording.totals) {
    const box = element("div", isBad && count ? "bad" : "");
    box.append(element("dd", "", count.toLocaleString("en")), element("dt", "", name));
    byId("totals").append(box);
  }
}

function setTheme(theme) {
  document.documentElement.dataset.theme = theme;
  readColours();
  tickPanel();
  drawLanes();
}

function otherTheme() {
  setTheme(document.documentElement.dataset.theme === "dark" ? "light" : "dark");
}

/// The cursor to the next change, in a direction, of what has a lane.
function step(direction) {
  const now = view.cursor === null ? (direction > 0 ? -1 : whole.to + 1) : view.cursor;
  const times = [...values.filter((series) => view.chosen.has(series.name)), ...keys, ...(link ? [link] : []),
    ...recording.marks.filter((mark) => mark.kind !== "event")].map((one) => one.t);
  let best = null;
  for (const list of times) {
    const at = direction > 0 ? indexAt(list, now) + 1 : indexAt(list, now - 1);
    if (at >= 0 && at < list.length && (best === null || (list[at] - best) * direction < 0))
      best = list[at];
  }
  if (best === null)
    return;
  if (best < view.from || best > view.to)
    showSpan(best - (view.to - view.from) / 2, best + (view.to - view.from) / 2);
  setCursor(best);
}

function middle() {
  const inside = view.cursor !== null && view.cursor >= view.from && view.cursor <= view.to;
  return inside ? view.cursor : (view.from + view.to) / 2;
}

const actions = {
  "+": () => zoom(0.5, middle()),
  "=": () => zoom(0.5, middle()),
  "-": () => zoom(2, middle()),
  "0": () => showSpan(whole.from, whole.to),
  "ArrowLeft": () => step(-1),
  "ArrowRight": () => step(1),
  "Escape": () => { setPin(null); byId("help").hidden = true; },
  "/": () => byId("filter").focus(),
  "t": otherTheme,
  "?": () => { byId("help").hidden = !byId("help").hidden; },
};

function listenToKeys() {
  addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey)
      return;
    if (event.target.matches("input[type=search]")) {
      if (event.key === "Escape")
        event.target.blur();
      return;
    }
    if (Object.hasOwn(actions, event.key)) {
      actions[event.key]();
      event.preventDefault();
    }
  });
  const presses = {"zoom-in": "+", "zoom-out": "-", "zoom-all": "0", "theme": "t", "help-button": "?"};
  for (const [id, key] of Object.entries(presses))
    byId(id).addEventListener("click", () => actions[key]());
}

buildHead();
const darkness = matchMedia("(prefers-color-scheme: dark)");
document.documentElement.dataset.theme = darkness.matches ? "dark" : "light";
readColours();
readAddress();
buildPanel();
buildTables();
buildLanes();
tickPanel();
readPanel();
listenToMouse();
listenToKeys();
onChange((changes) => {
  if (changes.chosen) {
    tickPanel();
    buildLanes();
  }
  if (changes.span)
    drawLanes();
  readLanes();
  readPanel();
});
darkness.addEventListener("change", () => setTheme(darkness.matches ? "dark" : "light"));
new ResizeObserver(() => { drawLanes(); placeLines(); }).observe(byId("scroll"));
drawLanes();
document.body.dataset.ready = "yes";
