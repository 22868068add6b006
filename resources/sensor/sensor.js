// SPDX-License-Identifier: GPL-3.0-or-later
// The sensor's live page. Everything a network sends (its name above all) goes into the
// page as text through textContent, never as markup.
"use strict";

const POLL_MS = 500;          // how often the page asks whether a cycle has finished
const CHART_NETWORKS = 5;     // the strongest networks drawn in the chart
const CHART = { width: 800, height: 240, left: 40, right: 10, top: 10, bottom: 20,
                minDbm: -100, maxDbm: -20, minSamples: 30 };
const SVG_NS = "http://www.w3.org/2000/svg";

const state = { cycle: null, data: null, sortColumn: -1, sortDown: false, busy: false };

function el(tag, text) {
  const node = document.createElement(tag);
  if (text !== undefined && text !== null)
    node.textContent = String(text);
  return node;
}

// The window's search rule: an empty text lets everything through; otherwise the name,
// the BSSID or the comment must contain it, ignoring case. A missing name or comment
// simply does not match.
function matchesSearch(network, text) {
  if (text === "")
    return true;
  const needle = text.toLowerCase();
  return [network.name, network.bssid, network.comment].some(
    (value) => typeof value === "string" && value.toLowerCase().includes(needle));
}

function cellText(value) {
  return value === null || value === undefined ? "" : String(value);
}

// Texts such as "43%", "40dB", "2.4GHz" or "149" compare by their number; others (a BSSID
// too, although it starts with digits) as text.
function sortKey(value) {
  if (typeof value === "number")
    return value;
  const match = /^(-?\d+(\.\d+)?)(%|dB|MHz|GHz)?$/.exec(cellText(value));
  return match ? parseFloat(match[1]) : null;
}

function compareCells(a, b) {
  const ka = sortKey(a), kb = sortKey(b);
  if (ka !== null && kb !== null)
    return ka - kb;
  return cellText(a).localeCompare(cellText(b));
}

function columnHeads() {
  return state.data.columns.concat(["Last Seen"]);
}

function rowValues(network) {
  return network.columns.concat([network.lastSeenText]);
}

function renderHead() {
  const row = document.querySelector("#networks thead tr");
  row.replaceChildren();
  columnHeads().forEach((head, index) => {
    const th = el("th", head);
    if (index === state.sortColumn)
      th.className = state.sortDown ? "sorted-down" : "sorted-up";
    th.addEventListener("click", () => {
      state.sortDown = state.sortColumn === index ? !state.sortDown : false;
      state.sortColumn = index;
      renderHead();
      renderTable();
    });
    row.appendChild(th);
  });
}

function visibleNetworks() {
  const text = document.getElementById("search").value;
  const rows = state.data.networks.filter((n) => matchesSearch(n, text));
  if (state.sortColumn >= 0) {
    const column = state.sortColumn;
    rows.sort((a, b) => {
      const order = compareCells(rowValues(a)[column], rowValues(b)[column]);
      return state.sortDown ? -order : order;
    });
  }
  return rows;
}

function renderTable() {
  const body = document.querySelector("#networks tbody");
  const rows = visibleNetworks();
  const fragment = document.createDocumentFragment();
  for (const network of rows) {
    const tr = el("tr");
    tr.dataset.bssid = network.bssid;
    for (const value of rowValues(network))
      tr.appendChild(el("td", cellText(value)));
    fragment.appendChild(tr);
  }
  body.replaceChildren(fragment);
  document.getElementById("count").textContent =
    rows.length + " of " + state.data.networks.length + " networks";
  return rows;
}

function svg(tag, attributes, text) {
  const node = document.createElementNS(SVG_NS, tag);
  for (const [name, value] of Object.entries(attributes))
    node.setAttribute(name, String(value));
  if (text !== undefined)
    node.textContent = text;
  return node;
}

function yOf(dbm) {
  const clamped = Math.min(CHART.maxDbm, Math.max(CHART.minDbm, dbm));
  const span = CHART.height - CHART.top - CHART.bottom;
  return CHART.top + (CHART.maxDbm - clamped) / (CHART.maxDbm - CHART.minDbm) * span;
}

// Newest sample at the right edge; a gap (null) breaks the line.
function renderChart(histories) {
  const chart = document.getElementById("chart");
  const legend = document.getElementById("legend");
  chart.replaceChildren();
  legend.replaceChildren();
  for (let dbm = CHART.maxDbm; dbm >= CHART.minDbm; dbm -= 20) {
    const y = yOf(dbm);
    chart.appendChild(svg("line", { class: "grid", x1: CHART.left, x2: CHART.width - CHART.right,
                                    y1: y, y2: y }));
    chart.appendChild(svg("text", { class: "axis", x: 2, y: y + 4 }, dbm + " dBm"));
  }
  // The x axis spans the longest history shown (a record keeps its last 301 scans).
  const span = Math.max(CHART.minSamples, ...histories.map((h) => h.signalsDbm.length));
  const step = (CHART.width - CHART.left - CHART.right) / (span - 1);
  for (const history of histories) {
    const samples = history.signalsDbm;
    const offset = span - samples.length;
    let points = [];
    const flush = () => {
      if (points.length > 1)
        chart.appendChild(svg("polyline", { points: points.join(" "), stroke: history.color }));
      points = [];
    };
    samples.forEach((dbm, i) => {
      if (dbm === null) {
        flush();
        return;
      }
      points.push((CHART.left + (offset + i) * step).toFixed(1) + "," + yOf(dbm).toFixed(1));
    });
    flush();
    const item = el("li");
    const swatch = el("span");
    swatch.className = "swatch";
    swatch.style.backgroundColor = history.color;
    item.appendChild(swatch);
    item.appendChild(document.createTextNode(
      (history.name === null ? "(hidden)" : history.name) + " " + history.bssid));
    legend.appendChild(item);
  }
}

async function getJson(path) {
  const response = await fetch(path, { cache: "no-store" });
  if (!response.ok)
    throw new Error(path + ": HTTP " + response.status);
  return response.json();
}

function renderStatus(status, iface) {
  const line = document.getElementById("status");
  line.className = "";
  line.textContent = "Cycle " + status.cycle + " · " + status.networks + " networks known · " +
    status.scansTotal + " scans, " + status.scanErrorsTotal + " failed · updated " +
    new Date(status.time).toLocaleTimeString();
  const i = iface.interface;
  document.getElementById("interface").textContent = i === null ? "No interface" :
    "Interface " + i.name + (i.powerOn ? " (on)" : " (off)") +
    (i.bssid ? " · joined to " + (i.ssid === null ? "(hidden)" : i.ssid) + " " + i.bssid +
               " · " + i.signalDbm + " dBm, " + i.transmitRateMbps.toFixed(1) + " Mbit/s" : "") +
    (i.channel ? " · channel " + i.channel.number : "");
}

async function refresh(status) {
  const [data, iface] = await Promise.all([getJson("api/networks"), getJson("api/interface")]);
  const firstTime = state.data === null;
  state.data = data;
  if (firstTime) {
    // A sort can be bookmarked too: ?sort=<column head>&order=desc.
    const wanted = parameters.get("sort");
    if (wanted !== null)
      state.sortColumn = columnHeads().indexOf(wanted);
    state.sortDown = parameters.get("order") === "desc";
    renderHead();
  }
  const rows = renderTable();
  const strongest = rows.filter((n) => typeof n.signalDbm === "number")
    .sort((a, b) => b.signalDbm - a.signalDbm).slice(0, CHART_NETWORKS);
  const histories = await Promise.all(strongest.map(
    (n) => getJson("api/history?bssid=" + encodeURIComponent(n.bssid)).catch(() => null)));
  renderChart(histories.filter((h) => h !== null));
  renderStatus(status, iface);
  document.body.dataset.cycle = String(data.cycle);
}

async function poll() {
  if (state.busy)
    return;
  state.busy = true;
  try {
    const status = await getJson("api/status");
    if (status.cycle !== state.cycle) {
      await refresh(status);
      state.cycle = status.cycle;
    }
  } catch (error) {
    const line = document.getElementById("status");
    line.className = "error";
    line.textContent = "The sensor does not answer (" + error.message + "); retrying.";
  } finally {
    state.busy = false;
  }
}

// A search can be bookmarked: ?search=TEXT fills the box.
const parameters = new URLSearchParams(window.location.search);
const initialSearch = parameters.get("search");
if (initialSearch !== null)
  document.getElementById("search").value = initialSearch;
document.getElementById("search").addEventListener("input", () => {
  if (state.data !== null)
    renderTable();
});
poll();
setInterval(poll, POLL_MS);
