/* Chart.js is loaded before this module, as the global `Chart`. */
import { foreign, make, makeButton } from "./dom.js";
import { number, shortNumber } from "./format.js";

const DASHES = [[], [7, 4], [2, 3]];
const POINTS = ["circle", "rectRot", "triangle"];

/** A colour of the page's style. */
function colour(name) {
  return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

/** The fill of a series: its colour with a pattern, so that nobody needs the colour to know it. */
function fillOf(series) {
  const size = 8;
  const tile = make("canvas", { width: size, height: size });
  const context = tile.getContext("2d");
  context.fillStyle = colour(`series-${series}`);
  context.fillRect(0, 0, size, size);
  context.strokeStyle = colour("panel");
  context.globalAlpha = 0.7;
  context.lineWidth = 1.3;
  context.beginPath();
  for (const [x0, y0, x1, y1] of PATTERNS[series]) {
    context.moveTo(x0, y0);
    context.lineTo(x1, y1);
  }
  context.stroke();
  return context.createPattern(tile, "repeat");
}

const RISING = [[-1, 9, 9, -1], [-1, 1, 1, -1], [7, 9, 9, 7]];
const FALLING = [[-1, -1, 9, 9], [-1, 7, 1, 9], [7, -1, 9, 1]];
const LEVEL = [[0, 2, 8, 2]];
const UPRIGHT = [[2, 0, 2, 8]];
const DOTS = [[1, 2, 3, 2], [5, 6, 7, 6]];
const PATTERNS = [[], RISING, LEVEL, FALLING, UPRIGHT, DOTS, [...RISING, ...FALLING]];

/** How many series have a fill of their own. The last one is for the rest. */
export const seriesCount = PATTERNS.length;

function optionsOf(titles, isStacked, shown) {
  const text = { color: colour("faint") };
  const grid = { color: colour("line"), borderColor: colour("field"), drawTicks: false };
  return {
    animation: false,
    maintainAspectRatio: false,
    interaction: { mode: "index", intersect: false },
    plugins: {
      legend: { display: false },
      tooltip: { callbacks: { title: ([item]) => titles[item.dataIndex] }, animation: false, boxPadding: 4 },
    },
    scales: {
      x: {
        stacked: isStacked,
        grid: { ...grid, display: false },
        ticks: { ...text, maxRotation: 0, autoSkipPadding: 14 },
      },
      y: {
        stacked: isStacked,
        beginAtZero: true,
        grid,
        ticks: { ...text, padding: 6, maxTicksLimit: 6, precision: 0, callback: shown },
      },
    },
  };
}

function draw(body, description, type, labels, titles, datasets, shown) {
  window.Chart.defaults.font.family = getComputedStyle(document.body).fontFamily;
  const canvas = make("canvas", { role: "img", "aria-label": description });
  body.append(make("div", { class: "chart" }, canvas));
  const isStacked = type === "bar" && datasets.length > 1;
  return new window.Chart(canvas, { type, data: { labels, datasets }, options: optionsOf(titles, isStacked, shown) });
}

/** Bars, one on another if there are several series: `{name, values}`. Returns the chart. */
export function drawBars(body, description, labels, titles, series) {
  const panel = colour("panel");
  const datasets = series.map(({ name, values, fill }, i) => ({
    label: name, data: values, backgroundColor: fillOf(fill ?? i), borderColor: panel,
    borderWidth: { top: series.length > 1 ? 1 : 0 }, categoryPercentage: 0.92, barPercentage: 0.94, maxBarThickness: 48,
  }));
  return draw(body, description, "bar", labels, titles, datasets, shortNumber);
}

/** Lines, which differ in dashes and points, too. Missing values are null. Returns the chart. */
export function drawLines(body, description, labels, titles, series) {
  const datasets = series.map(({ name, values }, i) => ({
    label: name, data: values, borderColor: colour(`series-${i}`), backgroundColor: colour(`series-${i}`),
    borderDash: DASHES[i], pointStyle: POINTS[i], borderWidth: 2, pointRadius: 3.5, pointHoverRadius: 5,
  }));
  return draw(body, description, "line", labels, titles, datasets, number);
}

/** Buttons that name the chart's series, and hide and show them. `notes` are shown after the names. */
export function makeLegend(chart, notes = []) {
  const items = chart.data.datasets.map((dataset, i) => {
    const button = makeButton("", () => {
      const isShown = !chart.isDatasetVisible(i);
      chart.setDatasetVisibility(i, isShown);
      chart.update();
      button.setAttribute("aria-pressed", String(isShown));
    }, { "aria-pressed": "true" });
    button.append(makeSwatch(chart.config.type, dataset), foreign(dataset.label, 60), make("span", {}, notes[i] ?? ""));
    return make("li", {}, button);
  });
  return make("ul", { class: "legend", "aria-label": "Series" }, ...items);
}

function makeSwatch(type, dataset) {
  const canvas = make("canvas", { width: type === "bar" ? 13 : 30, height: 13, "aria-hidden": "true" });
  const context = canvas.getContext("2d");
  if (type === "bar") {
    context.fillStyle = dataset.backgroundColor;
    context.fillRect(0, 0, 13, 13);
    return canvas;
  }
  context.strokeStyle = context.fillStyle = dataset.borderColor;
  context.lineWidth = 2;
  context.setLineDash(dataset.borderDash);
  context.moveTo(0, 6.5);
  context.lineTo(30, 6.5);
  context.stroke();
  context.setLineDash([]);
  const point = { pointStyle: dataset.pointStyle, radius: 4, rotation: 0, borderWidth: 1 };
  window.Chart.helpers.drawPoint(context, point, 15, 6.5);
  return canvas;
}
