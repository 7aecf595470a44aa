"use strict";
(() => {
const began = performance.now();
const data = JSON.parse(document.getElementById("data").textContent);
const root = document.documentElement;
const element = (name, text, parent) => {
  const made = document.createElement(name);
  made.textContent = text;
  parent.append(made);
  return made;
};
const byId = (id) => document.getElementById(id);
const colour = (name) => getComputedStyle(root).getPropertyValue("--" + name).trim();

// "#theme=dark&from=12.5&to=14" opens the page like that.
const wanted = new URLSearchParams(location.hash.slice(1));
const darkSystem = matchMedia("(prefers-color-scheme: dark)");
const useTheme = (dark) => {
  root.classList.toggle("dark", dark);
  root.classList.toggle("light", !dark);
};
useTheme(wanted.has("theme") ? wanted.get("theme") === "dark" : darkSystem.matches);

const pad = (number) => String(number).padStart(2, "0");
const formatTime = (seconds, digits) => {
  if (data.seconds < 120) {
    return seconds.toFixed(digits) + " s";
  }
  const rounded = Math.max(Number(seconds.toFixed(digits)), 0);
  const whole = Math.floor(rounded);
  const rest = digits > 0 ? (rounded - whole).toFixed(digits).slice(1) : "";
  const hours = data.seconds >= 3600 ? Math.floor(whole / 3600) + ":" : "";
  return hours + pad(Math.floor(whole / 60) % (hours ? 60 : 1e9)) + ":" + pad(whole % 60) + rest;
};
const formatNumber = (value) =>
  value === null || value === undefined ? "\u2013"
    : value !== 0 && Math.abs(value) < 0.001 ? value.toExponential(1)
      : value.toFixed(Math.abs(value) < 10 ? 3 : Math.abs(value) < 1000 ? 1 : 0);

// Titles and figures.
const many = (count, one, more) => `${count.toLocaleString("en")} ${count === 1 ? one : more}`;
document.title = data.name + " - qlt compare";
byId("title").textContent = data.name;
byId("summary").textContent = [
  many(data.reports, "report", "reports"), formatTime(data.seconds, 1),
  data.truthName ? "truth: " + data.truthName : "without a truth",
].join(" \u00b7 ");
byId("footer").textContent = "Made by qlt " + data.version + ". Charts by uPlot (MIT licence).";

const ROWS = [
  ["Inclination error, RMS", "inclinationRms", "\u00b0"],
  ["Inclination error, largest", "inclinationMost", "\u00b0"],
  ["Heading drift", "driftPerMinute", "\u00b0/min"],
  ["Prediction of 20 ms, RMS error", "predictionRms20", "\u00b0"],
  ["Prediction of 50 ms, RMS error", "predictionRms50", "\u00b0"],
];
const COUNTS = [
  ["Reports lost", "lost"], ["Reports repeated", "repeated"],
  ["Reports with an axis at its limit", "saturated"], ["Samples refused", "refused"],
  ["Pauses too long to bridge", "gaps"],
];
const makeTable = () => {
  const table = byId("figures");
  const head = element("tr", "", element("thead", "", table));
  ["", "core", "kit"].forEach((name) => { element("th", name, head).scope = "col"; });
  const body = element("tbody", "", table);
  const addRow = (name, cells) => {
    const row = element("tr", "", body);
    element("th", name, row).scope = "row";
    cells.forEach((cell) => element("td", cell, row));
    return row;
  };
  for (const [name, key, unit] of ROWS) {
    if (data.truthName || key.startsWith("prediction")) {
      addRow(`${name} (${unit})`,
             [formatNumber(data.core[key]), formatNumber(data.kit[key])]);
    }
  }
  const spanning = (name, text) => { addRow(name, [text]).lastChild.colSpan = 2; };
  spanning("Inclinations apart, RMS (\u00b0)", formatNumber(data.differenceRms));
  COUNTS.forEach(([name, key]) => spanning(name, data.counts[key].toLocaleString("en")));
  byId("note").textContent =
    "Figures and worst moments count from 5 s on. The core predicts by holding its orientation." +
    (data.truthName ? "" : " Errors of inclination and heading need a truth file.");
};
makeTable();

const charts = [];
const worst = [];
let chosen = -1;

if (data.reports === 0) {
  const message = element("p", "This capture has no reports, so there is nothing to draw.",
                          byId("charts"));
  message.className = "empty";
  element("p", "None.", byId("worst"));
  root.dataset.drawnMs = (performance.now() - began).toFixed(0);
  return;
}
byId("tools").hidden = false;
byId("help").hidden = false;

const MARKS = [
  ["gyroscope", "gyroscope at its limit"], ["accelerometer", "accelerometer at its limit"],
  ["lost", "reports lost, or a pause"],
];
const TRACKS = {
  inclinationCore: ["core", "core", "inclination of the core", "\u00b0"],
  inclinationKit: ["kit", "kit", "inclination of the kit", "\u00b0"],
  difference: ["difference", "kit", "inclinations apart", "\u00b0"],
  headingCore: ["core", "core"],
  headingKit: ["kit", "kit"],
  accelerationCore: ["core", "core"],
  accelerationKit: ["kit", "kit"],
  biasX: ["x", "x"],
  biasY: ["y", "y"],
  biasZ: ["z", "z"],
  predictionCore: ["core", "core", "prediction of the core", "\u00b0"],
  predictionKit: ["kit", "kit", "prediction of the kit", "\u00b0"],
};
const CHARTS = [
  data.truthName
    ? ["Inclination error", "\u00b0", ["inclinationCore", "inclinationKit"], true]
    : ["Inclinations apart", "\u00b0, core against kit", ["difference"], true],
  [data.truthName ? "Heading error" : "Heading", "\u00b0, from its beginning",
   ["headingCore", "headingKit"], false],
  ["Acceleration of the head", "m/s\u00b2, without the gravity that the orientation gives",
   ["accelerationCore", "accelerationKit"], true],
  ["Bias of the gyroscope", "\u00b0/s, as the kit learns it; the core has none",
   ["biasX", "biasY", "biasZ"], false],
  ["Prediction error", "\u00b0, 20 ms ahead", ["predictionCore", "predictionKit"], true],
];

const points = Object.values(data.tracks)[0].length;
const times = Float64Array.from({length: points}, (_, i) => i * data.step);
const end = Math.max(data.seconds, data.step);
const range = {
  from: Number(wanted.get("from") ?? 0),
  to: Number(wanted.get("to") ?? end),
};

// The marked stretches behind the curves, and a line at the chosen moment.
const drawMarks = (u) => {
  const {ctx, bbox} = u;
  ctx.save();
  ctx.beginPath();
  ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
  ctx.clip();
  ctx.globalAlpha = 0.28;
  for (const [name] of MARKS) {
    ctx.fillStyle = colour(name);
    for (const [from, to] of data.marks[name]) {
      if (to >= u.scales.x.min && from <= u.scales.x.max) {
        const left = u.valToPos(from, "x", true);
        const width = Math.max(u.valToPos(to, "x", true) - left, devicePixelRatio);
        ctx.fillRect(left, bbox.top, width, bbox.height);
      }
    }
  }
  ctx.restore();
};
const drawChosen = (u) => {
  if (chosen >= 0) {
    const x = Math.round(u.valToPos(data.worst[chosen].seconds, "x", true));
    if (x >= u.bbox.left && x <= u.bbox.left + u.bbox.width) {
      u.ctx.fillStyle = colour("chosen");
      u.ctx.fillRect(x, u.bbox.top, devicePixelRatio, u.bbox.height);
    }
  }
};

let following = false; // a chart follows another one
const follow = (u) => {
  if (following) {
    return;
  }
  following = true;
  const {min, max} = u.scales.x;
  Object.assign(range, {from: min, to: max});
  root.dataset.range = `${min.toFixed(3)} ${max.toFixed(3)}`;
  charts.filter((other) => other !== u).forEach((other) => other.setScale("x", {min, max}));
  following = false;
};
const show = (from, to) => {
  const length = Math.min(Math.max(to - from, 20 * data.step), end);
  const begin = Math.min(Math.max(from, 0), end - length);
  charts[0].setScale("x", {min: begin, max: begin + length});
};
const zoom = (factor, about) => {
  const at = about ?? (range.from + range.to) / 2;
  show(at - (at - range.from) * factor, at + (range.to - at) * factor);
};
const move = (share) => {
  const step = (range.to - range.from) * share;
  show(range.from + step, range.to + step);
};
const choose = (index) => {
  chosen = (index + data.worst.length) % data.worst.length;
  worst.forEach((button, i) => button.setAttribute("aria-current", String(i === chosen)));
  const at = data.worst[chosen].seconds;
  const half = Math.max(1, 100 * data.step);
  show(at - half, at + half);
  // The charts take their new scale at the end of this task.
  setTimeout(() => charts.forEach((u) => {
    u.redraw(false);
    u.setCursor({left: u.valToPos(at, "x"), top: 10});
  }));
};

// Between the lines of the time axis, seconds.
const STEPS = [0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120,
               300, 600, 900, 1800, 3600, 7200, 14400, 28800, 86400];
const widthOf = () => Math.max(byId("charts").clientWidth, 280);
const makeChart = ([title, unit, names, fromZero]) => {
  const figure = element("figure", "", byId("charts"));
  element("span", "  " + unit, element("figcaption", title, figure));
  const shown = names.filter((name) => data.tracks[name]);
  const axis = () => ({
    stroke: () => colour("soft"),
    grid: {stroke: () => colour("grid"), width: 1},
    ticks: {stroke: () => colour("line"), width: 1},
  });
  const digits = (step) => Math.max(0, Math.min(3, Math.ceil(-Math.log10(step))));
  const chart = new uPlot({
    width: widthOf(), height: 180, legend: {live: true},
    cursor: {sync: {key: "time"}, drag: {x: true, y: false}},
    scales: {
      x: {time: false, range: (u, min, max) => [min ?? 0, max ?? end]},
      y: {range: (u, min, max) => {
        const spread = Math.max((max ?? 1) - (fromZero ? 0 : min ?? 0), 1e-3);
        return [fromZero ? 0 : (min ?? 0) - 0.05 * spread, (max ?? 1) + 0.05 * spread];
      }},
    },
    axes: [
      {...axis(), size: 34, incrs: STEPS, values: (u, splits, i, space, step) =>
        splits.map((split) => formatTime(split, digits(step)))},
      {...axis(), size: 62},
    ],
    series: [
      {label: "time", value: (u, value) =>
        value === null ? "\u2013" : formatTime(value, digits(data.step))},
      ...shown.map((name) => ({
        label: TRACKS[name][0], width: 1.3, points: {show: false},
        stroke: () => colour(TRACKS[name][1]),
        value: (u, value) => formatNumber(value),
      })),
    ],
    hooks: {drawClear: [drawMarks], draw: [drawChosen],
            setScale: [(u, key) => { if (key === "x") { follow(u); } }]},
  }, [times, ...shown.map((name) => data.tracks[name])], figure);
  chart.root.setAttribute("role", "img");
  chart.root.setAttribute("aria-label", `${title} over time, ${unit}`);
  chart.over.addEventListener("wheel", (event) => {
    if (event.ctrlKey) {
      event.preventDefault();
      zoom(event.deltaY < 0 ? 0.8 : 1.25, chart.posToVal(event.offsetX, "x"));
    }
  }, {passive: false});
  charts.push(chart);
};

const marks = element("p", "", byId("charts"));
marks.className = "marks";
for (const [name, text] of MARKS) {
  const swatch = document.createElement("i");
  swatch.style.background = `var(--${name})`;
  element("span", `${text}: ${many(data.marks[name].length, "stretch", "stretches")}`, marks)
    .prepend(swatch);
}
CHARTS.forEach(makeChart);

let track = "";
data.worst.forEach((moment, index) => {
  const [, , title, unit] = TRACKS[moment.track];
  if (moment.track !== track) {
    track = moment.track;
    element("h3", title[0].toUpperCase() + title.slice(1), byId("worst"));
  }
  const text = `${formatTime(moment.seconds, 2)}: ${formatNumber(moment.value)}${unit}`;
  const button = element("button", text, byId("worst"));
  button.type = "button";
  button.addEventListener("click", () => choose(index));
  worst.push(button);
});
if (worst.length === 0) {
  element("p", "None: nothing was compared after the first 5 s.", byId("worst"));
}

const redrawAll = () => charts.forEach((u) => u.redraw(false, true));
const KEYS = {
  "0": () => show(0, end), "+": () => zoom(0.5), "=": () => zoom(0.5), "-": () => zoom(2),
  ArrowLeft: () => move(-0.25), ArrowRight: () => move(0.25),
  n: () => worst.length && choose(chosen + 1),
  p: () => worst.length && choose(Math.max(chosen, 0) - 1),
  t: () => { useTheme(!root.classList.contains("dark")); redrawAll(); },
};
const press = (key) => {
  const action = KEYS[key.length === 1 ? key.toLowerCase() : key];
  action?.();
  return action !== undefined;
};
addEventListener("keydown", (event) => {
  if (!event.ctrlKey && !event.altKey && !event.metaKey && press(event.key)) {
    event.preventDefault();
  }
});
byId("tools").addEventListener("click", (event) => press(event.target.dataset.key ?? ""));
darkSystem.addEventListener("change", (event) => { useTheme(event.matches); redrawAll(); });
addEventListener("resize", () => charts.forEach((u) => u.setSize({width: widthOf(), height: 180})));

show(range.from, range.to);
if (wanted.has("moment") && worst.length > 0) {
  choose(Number(wanted.get("moment")));
}
requestAnimationFrame(() => requestAnimationFrame(() => {
  root.dataset.drawnMs = (performance.now() - began).toFixed(0);
}));
})();
