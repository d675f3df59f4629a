"use strict";
// Everything that comes from the catalogue or the log enters the page as text, never as markup.
const data = JSON.parse(document.getElementById("data").textContent);

// How the library compares: the letters A to Z alone have another case.
const fold = (text) => text.replace(/[A-Z]/g, (letter) => letter.toLowerCase());
// What the Start screen's search looks up of a text.
const tokensOf = (text) =>
  text.match(/[\/-9A-Z_a-z]+|[\\\u3041-\u30ff\u3400-\u4db5\u4e00-\u9fc3\uf900-\ufa2d\ufa30-\ufa6a\uff10-\uff19\uff21-\uff3a\uff41-\uff5a\uff66-\uff9f]/g) || [];
const hits = (tokens, text) => tokens.every((token) => text.includes(token));

// The names that a launch of this one excludes, and those that it finds.
function search(wanted) {
  const lower = fold(wanted);
  const tokens = tokensOf(lower);
  const known = new Set();
  const excluded = [];
  const exclude = (name) => {
    if (!known.has(fold(name))) {
      known.add(fold(name));
      excluded.push(name);
    }
  };
  const ask = (name, reading) => {
    if (name !== "" && hits(tokens, name) && !hits(tokensOf(name), lower)) {
      exclude(name);
    }
    if (name !== "" && reading !== "" && hits(tokens, reading)) {
      exclude(name);
    }
  };
  for (const app of data.Applications) {
    if (!app.IsInstalled || app.DisplayName === undefined) {
      continue;
    }
    const name = app.LocalizeName || app.DisplayName;
    if (name === "" || fold(name) === lower) {
      continue;
    }
    ask(name, app.RubyDisplayName);
    if (app.Kind === "store") {
      ask(app.ShortName, app.RubyShortName);
    }
  }
  return excluded;
}

function queryFor(wanted) {
  const excluded = search(wanted);
  const clause = excluded.map((name) => `"${name}"`).join(" OR ");
  return `"${wanted}"` + (excluded.length === 0 ? "" : ` NOT(${clause})`);
}

function addCell(row, text, className) {
  const cell = row.insertCell();
  cell.textContent = text;
  cell.className = className || "";
  return cell;
}

function nameOf(app) {
  return app.LocalizeName || app.DisplayName || "";
}

function fillApplications() {
  const body = document.querySelector("#applications tbody");
  for (const app of data.Applications) {
    const row = body.insertRow();
    addCell(row, app.Kind);
    addCell(row, nameOf(app));
    addCell(row, app.ShortName || "");
    addCell(row, [app.RubyDisplayName, app.RubyShortName].filter(Boolean).join(", "));
    addCell(row, app.PackageFamilyName || app.LnkFileName || "");
    addCell(row, [app.IsInstalled ? "" : "not installed", app.NeedReserve ? "reserved" : "",
      app.IsDualMode ? "dual mode" : ""].filter(Boolean).join(", "));
  }
}

function showQuery() {
  const wanted = document.getElementById("name").value;
  const rows = document.querySelector("#applications tbody").rows;
  const excluded = new Set(wanted === "" ? [] : search(wanted).map(fold));
  let called = 0;
  data.Applications.forEach((app, index) => {
    const names = [nameOf(app), app.ShortName || ""].filter(Boolean).map(fold);
    const isCalled = wanted !== "" && app.IsInstalled && names.includes(fold(wanted));
    called += isCalled ? 1 : 0;
    const isExcluded = app.IsInstalled && !isCalled && names.some((name) => excluded.has(name));
    rows[index].className = isCalled ? "called" : isExcluded ? "excluded" : "";
  });
  document.getElementById("query").textContent = wanted === "" ? "" : queryFor(wanted);
  document.getElementById("remark").textContent = wanted === "" ? "Type a name: the query appears here." :
    `${called === 0 ? "No application that is installed is" : called === 1 ? "1 application is" : called + " applications are"} called so; ${excluded.size} excluded. What is left in, "qanh explain" tells.`;
}

function counted(number, one, several = one + "s") {
  return `${number} ${number === 1 ? one : several}`;
}

function fillDiagnoses() {
  const all = document.querySelector("#diagnoses tbody");
  const problems = document.querySelector("#problems tbody");
  const add = (body, level, subject, text, advice) => {
    const row = body.insertRow();
    row.className = level;
    addCell(row, level);
    addCell(row, subject);
    const cell = addCell(row, text);
    if (advice !== "") {
      const line = document.createElement("div");
      line.className = "advice";
      line.textContent = advice;
      cell.append(line);
    }
  };
  for (const entry of data.Diagnoses) {
    add(all, entry.Level, entry.Subject, entry.Text, entry.Advice);
    if (entry.Level !== "ok") {
      add(problems, entry.Level, entry.Subject, entry.Text, entry.Advice);
    }
  }
  for (const text of data.Problems) {
    add(problems, "problem", "report", text, "");
  }
  for (const entry of data.Findings) {
    add(problems, entry.IsProblem ? "problem" : "note", `catalogue, line ${entry.Line}`, entry.Text, "");
  }
  if (problems.rows.length === 0) {
    add(problems, "ok", "", "none", "");
  }
}

const milliseconds = (time) => Date.parse(time.replace(" ", "T") + "Z");
const svgName = "http://www.w3.org/2000/svg";

function draw(parent, element, attributes, text) {
  const node = document.createElementNS(svgName, element);
  for (const [name, value] of Object.entries(attributes)) {
    node.setAttribute(name, value);
  }
  if (text !== undefined) {
    node.textContent = text;
  }
  parent.append(node);
  return node;
}

const phases = [["Exclusions", "#8250df", "exclusions"], ["StartScreen", "#1b7c83", "Start screen"],
  ["SearchPane", "#54aeff", "search pane"], ["Clipboard", "#bf8700", "clipboard"],
  ["PasteAndStart", "#2da44e", "paste and start"]];
const shownLaunches = 40;

// Above, what happened when; below, where the time of each launch went.
function drawTimeLine(log) {
  const width = 1000;
  const launches = log.Launches.slice(-shownLaunches);
  const svg = draw(document.getElementById("timeline"), "svg", {
    viewBox: `0 0 ${width} ${110 + 22 * launches.length}`, width: "100%", role: "img"});
  draw(svg, "title", {}, "Time line of the log");
  const begin = milliseconds(log.Begin);
  const span = Math.max(milliseconds(log.End) - begin, 1);
  const at = (time) => 10 + (milliseconds(time) - begin) / span * (width - 20);
  const mark = (time, length, y, height, fill, title) => {
    const bar = draw(svg, "rect", {x: at(time), y, height, fill,
      width: Math.max((length || 0) / span * (width - 20), 2)});
    draw(bar, "title", {}, title);
  };
  draw(svg, "line", {x1: 10, x2: width - 10, y1: 50, y2: 50, stroke: "#888"});
  draw(svg, "text", {x: 10, y: 66}, log.Begin);
  draw(svg, "text", {x: width - 10, y: 66, "text-anchor": "end"}, log.End);
  for (const pass of log.RefreshPasses) {
    mark(pass.Time, pass.Milliseconds, 38, 12, "#bbc4d0", `refresh pass ${pass.Time}`);
  }
  for (const launch of log.Launches) {
    mark(launch.Time, launch.Milliseconds, 20, 16, "#0969da", `launch ${launch.Arguments} ${launch.Time}`);
  }
  for (const failure of log.Failures) {
    if (failure.Time !== null) {
      mark(failure.Time, 0, 4, 14, "#cf222e", `${failure.Operation} ${failure.Text}`);
    }
  }
  let x = 10;
  for (const [label, color] of [["refresh pass", "#bbc4d0"], ["launch", "#0969da"], ["failure", "#cf222e"],
    ...phases.map(([, color, label]) => [label, color])]) {
    draw(svg, "rect", {x, y: 80, width: 10, height: 10, fill: color});
    draw(svg, "text", {x: x + 14, y: 90}, label);
    x += 24 + label.length * 7;
  }
  const longest = Math.max(1, ...launches.map((launch) => launch.Milliseconds || 0));
  launches.forEach((launch, index) => {
    const y = 106 + 22 * index;
    draw(svg, "text", {x: 10, y: y + 12}, `${launch.Time.slice(11)}  (${launch.Arguments})`.slice(0, 48));
    let from = 340;
    const scale = (width - 440) / longest;
    draw(svg, "rect", {x: from, y, width: (launch.Milliseconds || 0) * scale, height: 14, fill: "#eee"});
    for (const [key, fill] of phases) {
      const length = (launch[key] || 0) * scale;
      draw(svg, "rect", {x: from, y, width: length, height: 14, fill});
      from += length;
    }
    draw(svg, "text", {x: 345 + (launch.Milliseconds || 0) * scale, y: y + 12},
      launch.Milliseconds === null ? "no exit in the log" : `${launch.Milliseconds} ms`);
  });
}

function fillLog() {
  const log = data.Log;
  const about = document.getElementById("log");
  if (log === null || log.Begin === null) {
    about.textContent = "There is no log.";
    return;
  }
  about.textContent = `${log.Path}: ${log.Begin} to ${log.End}, ${counted(log.Lines, "line")}, ` +
    `${counted(log.Launches.length, "launch", "launches")}, ` +
    `${counted(log.RefreshPasses.length, "refresh pass", "refresh passes")}, ${counted(log.FailureCount, "failure")}` +
    (log.FailureCount > log.Failures.length ? `, of which the last ${log.Failures.length} are shown` : "");
  drawTimeLine(log);
  const body = document.querySelector("#failures tbody");
  for (const failure of log.Failures) {
    const row = body.insertRow();
    addCell(row, `line ${failure.Line}`);
    addCell(row, failure.Time || "");
    addCell(row, failure.Thread + (failure.IsGuess ? "?" : ""));
    addCell(row, `${failure.Operation} ${failure.Text}`);
    addCell(row, failure.Meaning);
  }
}

document.getElementById("about").textContent = `Made ${data.Made} by qanh.`;
document.getElementById("catalogue").textContent =
  data.Catalogue === null ? "No catalogue was named." : `${data.Catalogue}: ${counted(data.Applications.length, "application")}`;
fillApplications();
fillDiagnoses();
fillLog();
document.getElementById("name").addEventListener("input", showQuery);
showQuery();
