// What was on the line, counted.
"use strict";

function addTable(title, heads, lines) {
  const parent = document.getElementById("tables");
  const box = element("section");
  box.append(element("h2", "", title));
  const table = element("table");
  const head = element("tr");
  for (const text of heads)
    head.append(element("th", "", text));
  table.append(element("thead"), element("tbody"));
  table.tHead.append(head);
  for (const line of lines) {
    const row = element("tr");
    for (const cell of line) {
      const made = element("td", typeof cell === "number" ? "number" : "");
      if (cell instanceof Node)
        made.append(cell);
      else
        made.textContent = typeof cell === "number" ? cell.toLocaleString("en") : cell;
      row.append(made);
    }
    table.tBodies[0].append(row);
  }
  box.append(table);
  parent.append(box);
}

/// A text that shows its moment when it is pressed.
function moment(text, time) {
  const made = element("button", "moment", text);
  made.title = "Show " + timeText(time, 1e3);
  made.addEventListener("click", () => goTo(time));
  return made;
}

function rateText(frame) {
  const span = frame.last - frame.first;
  return frame.count > 1 && span > 0 ? ((frame.count - 1) / span * 1e6).toPrecision(3) : "";
}

const kFaultsListed = 200;

function buildTables() {
  if (recording.frames.length)
    addTable("Frames by type",
      ["from", "type", "name", "frames", "a second", "bad checksum", "first", "last", "longest gap"],
      recording.frames.map((frame) => [frame.from, frame.type, frame.name, frame.count, rateText(frame),
        frame.bad, frame.count ? moment(timeText(frame.first, 1e3), frame.first) : "",
        frame.count ? moment(timeText(frame.last, 1e3), frame.last) : "",
        frame.count > 1 ? moment(spanText(frame.gap), frame.gapAt) : ""]));
  const faults = [];
  for (const mark of recording.marks)
    if (mark.kind !== "event")
      mark.t.forEach((time, i) => faults.push({time, mark, i}));
  faults.sort((a, b) => a.time - b.time);
  if (faults.length)
    addTable(faults.length > kFaultsListed ? "Faults: the first " + kFaultsListed + " of " + faults.length : "Faults",
      ["at", "what", "times", "bytes"],
      faults.slice(0, kFaultsListed).map(({time, mark, i}) =>
        [moment(timeText(time, 1e3), time), mark.name, mark.n ? mark.n[i] : 1, mark.text[i]]));
  const signals = recording.marks.filter((mark) => mark.kind === "event");
  if (signals.length)
    addTable("Signals", ["name", "times", "first", "last"], signals.map((mark) => [mark.name, mark.count,
      moment(timeText(mark.t[0], 1e3), mark.t[0]),
      moment(timeText(mark.t[mark.t.length - 1], 1e3), mark.t[mark.t.length - 1])]));
}
