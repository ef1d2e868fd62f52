// All values by name with what they are at the cursor; those that are ticked have a lane.
"use strict";

const rows = [];

function buildPanel() {
  const parent = document.getElementById("values");
  let group = null;
  for (const series of values) {
    if (!group || group.name !== groupOf(series.name)) {
      group = {name: groupOf(series.name), box: element("div", "group")};
      const head = element("h3", "", group.name);
      const names = values.filter((one) => groupOf(one.name) === group.name).map((one) => one.name);
      head.title = "Plot the group, or take it away";
      head.addEventListener("click", () => {
        const all = names.every((name) => view.chosen.has(name));
        choose([...view.chosen].filter((name) => !names.includes(name)).concat(all ? [] : names));
      });
      group.box.append(head);
      parent.append(group.box);
    }
    const line = element("label", "value" + (isChanged(series) ? "" : " still"));
    const tick = element("input");
    tick.type = "checkbox";
    tick.addEventListener("change", () => choose(tick.checked
      ? [...view.chosen, series.name]
      : [...view.chosen].filter((name) => name !== series.name)));
    const text = element("output", "", "");
    const inGroup = series.name.slice(group.name.length + 1);
    line.append(tick, element("span", "value-name", inGroup || series.name), text);
    line.dataset.name = series.name;
    line.title = series.name + (series.changes === 1 ? ": 1 change" : ": " + series.changes + " changes") +
      (series.width ? "; of each " + spanText(series.width) + " the first, last, smallest and largest" : "");
    group.box.append(line);
    rows.push({series, line, tick, text, group: group.box});
  }
  const filter = document.getElementById("filter");
  const listAll = document.getElementById("list-all");
  listAll.checked = !values.some(isChanged);
  filter.addEventListener("input", filterPanel);
  listAll.addEventListener("change", filterPanel);
  const press = (id, names) => document.getElementById(id).addEventListener("click", () => choose(names()));
  press("choose-changed", () => values.filter(isChanged).map((series) => series.name));
  press("choose-found", () => rows.filter((row) => !row.line.hidden).map((row) => row.series.name));
  press("choose-none", () => []);
  filterPanel();
}

/// A value is listed when its name has each of the words.
function filterPanel() {
  const words = document.getElementById("filter").value.toLowerCase().split(/\s+/);
  const all = document.getElementById("list-all").checked || words.some((word) => word);
  for (const row of rows)
    row.line.hidden = !(all || isChanged(row.series)) ||
      !words.every((word) => row.series.name.toLowerCase().includes(word));
  for (const group of document.querySelectorAll(".group"))
    group.hidden = !group.querySelector(".value:not([hidden])");
}

function tickPanel() {
  for (const row of rows) {
    row.tick.checked = view.chosen.has(row.series.name);
    row.tick.style.accentColor = colourOf(row.series);
  }
}

function readPanel() {
  const time = view.cursor === null ? whole.to : view.cursor;
  for (const row of rows) {
    const text = textAt(row.series, time);
    if (row.text.textContent !== text)
      row.text.textContent = text;
  }
  const write = (id, text) => { document.getElementById(id).textContent = text || "\u00a0"; };
  const step = view.cursor === null ? 1e3 : Math.max(1, 10 ** Math.floor(Math.log10((view.to - view.from) / 1000)));
  write("cursor-time", view.cursor === null ? "at the end" : timeText(time, Math.min(step, 1e3)));
  write("cursor-clock", clockText(time));
  const delta = view.cursor === null || view.pin === null ? null : view.cursor - view.pin;
  write("cursor-delta", delta === null ? "" : "\u0394 " + (delta < 0 ? "\u2212" : "") + spanText(Math.abs(delta)) +
    (delta ? "   " + (1e6 / Math.abs(delta)).toPrecision(3) + " Hz" : ""));
}
