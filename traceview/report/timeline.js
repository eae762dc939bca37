// The time line: a row for each connection or function, drawn on a canvas for the part of the axis
// that is in view.

const kLaneHeight = 18, kMostLanes = 66, kSmallestSpan = 20;

const timeline = {
  lanes: [],
  from: 0,
  to: 1,
  fullTo: 1,
  onClick: () => {},
  onSpan: () => {},
};

function colour(name) {
  return getComputedStyle(document.documentElement).getPropertyValue('--' + name).trim();
}

// Rows by what `keyOf` says of a line; the rarest share one row if there are too many.
function lanesBy(keyOf, labelOf, order) {
  const byKey = new Map();
  for (let line = 0; line < count; ++line) {
    const key = keyOf(line);
    if (!byKey.has(key)) byKey.set(key, []);
    byKey.get(key).push(line);
  }
  let entries = [...byKey].map(([key, lines]) => ({key, label: labelOf(key), lines}));
  if (entries.length > kMostLanes) {
    entries.sort((a, b) => b.lines.length - a.lines.length);
    const rest = entries.slice(kMostLanes - 1);
    entries = entries.slice(0, kMostLanes - 1);
    const lines = rest.flatMap((entry) => entry.lines).sort((a, b) => a - b);
    entries.push({key: null, label: rest.length + ' others', lines});
  }
  return entries.sort(order);
}

function connectionLanes() {
  const lanes = lanesBy((line) => trace.connection[line],
      (connection) => connection < 0 ? 'none' : 'Connection ' + connection,
      (a, b) => a.key - b.key);  // at most 65, so none is put among others
  for (const lane of lanes) {
    lane.requests = requests.filter((request) => request.connection === lane.key);
  }
  return lanes;
}

function functionLanes() {
  return lanesBy(functionOf, (name) => name === '' ? '(no function)' : visible(name),
      (a, b) => (a.key === null) - (b.key === null) || (a.label < b.label ? -1 : 1));
}

function labelWidth() { return byId('lanes').clientWidth < 600 ? 104 : 170; }
function plotWidth() { return Math.max(40, byId('lanes').clientWidth - labelWidth() - 10); }
function xOf(value) {
  return labelWidth() + (value - timeline.from) / (timeline.to - timeline.from) * plotWidth();
}
function valueAt(x) {
  return timeline.from + (x - labelWidth()) / plotWidth() * (timeline.to - timeline.from);
}

function prepared(canvas, height) {
  const width = byId('lanes').clientWidth, scale = window.devicePixelRatio || 1;
  canvas.width = Math.round(width * scale);
  canvas.height = Math.round(height * scale);
  canvas.style.height = height + 'px';
  const pen = canvas.getContext('2d');
  pen.scale(scale, scale);
  pen.clearRect(0, 0, width, height);
  pen.font = '12px system-ui, "Segoe UI", sans-serif';
  pen.textBaseline = 'middle';
  return pen;
}

function fitted(pen, text, width) {
  if (pen.measureText(text).width <= width) return text;
  let end = text.length;
  while (end > 1 && pen.measureText(text.slice(0, end) + '\u2026').width > width) --end;
  return text.slice(0, end) + '\u2026';
}

function axisLabel(value, step) {
  if (!hasClock) return numberText(Math.round(value) + 1);
  const found = lastAtMost(raw.segments.length, value,
      (i) => trace.time[raw.segments[i][0]]);
  const [, clock, offset] = raw.segments[Math.max(0, found)];
  const written = value - offset;
  if (clock !== kTimeOfDay) {
    return (written / 1e6).toFixed(Math.max(0, Math.min(6, 6 - Math.floor(Math.log10(step))))) + ' s';
  }
  const text = clockText(clock, written);
  return step >= 1e6 ? text.slice(0, 8) : text;
}

function niceStep(span, most) {
  const rough = span / most;
  if (hasClock && rough > 10e6) {
    const steps = [15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 43200, 86400];
    return 1e6 * (steps.find((step) => step * 1e6 >= rough) ||
        Math.ceil(rough / 86400e6) * 86400);
  }
  const power = 10 ** Math.floor(Math.log10(rough));
  return Math.max(1, power * [1, 2, 5, 10].find((factor) => factor * power >= rough));
}

function gridLines() {
  const span = timeline.to - timeline.from;
  const step = niceStep(span, Math.max(2, plotWidth() / 90));
  const base = hasClock ? -raw.segments[0][2] : 0;  // so that labels fall on round times
  const values = [];
  let value = Math.ceil((timeline.from + base) / step) * step - base;
  for (; value <= timeline.to && values.length < 50; value += step) values.push(value);
  return {step, values};
}

function drawAxis(grid) {
  const pen = prepared(byId('axis'), 24);
  pen.fillStyle = colour('quiet');
  pen.textAlign = 'center';
  for (const value of grid.values) {
    const label = axisLabel(value, grid.step);
    const half = pen.measureText(label).width / 2, x = xOf(value);
    if (x + half < byId('lanes').clientWidth && x - half > 0) pen.fillText(label, x, 12);
  }
}

// Lines of one pixel become one tick, with the worst of their marks on it.
function drawTicks(pen, lane, top, ink) {
  const tall = lane.requests === undefined ? 12 : 6, before = timeline.from - 1e-9;
  let pixel = -1, worst = 0;
  const draw = () => {
    if (pixel < 0) return;
    const bar = (colourOf, width, height) => {
      pen.fillStyle = colourOf;
      pen.fillRect(pixel, top + (kLaneHeight - height) / 2, width, height);
    };
    bar(ink.tick, 1.2, tall);
    if (worst === kNotice) bar(ink.notice, 1.2, 4);
    if (worst === kError) bar(ink.error, 2, 12);
  };
  for (let i = 1 + lastAtMost(lane.lines.length, before, (k) => axis[lane.lines[k]]);
    i < lane.lines.length && axis[lane.lines[i]] <= timeline.to; ++i) {
    const x = Math.round(xOf(axis[lane.lines[i]]));
    if (x !== pixel) {
      draw();
      pixel = x;
      worst = 0;
    }
    worst = Math.max(worst, trace.mark[lane.lines[i]]);
  }
  draw();
}

// A request that lies wholly below another one of the same or a worse mark is not drawn.
function drawRequests(pen, lane, top, ink) {
  const left = labelWidth();
  let covered = -1, coveredMark = 0;
  for (const request of lane.requests || []) {
    const begin = axis[request.first], end = axis[request.last];
    if (end < timeline.from) continue;
    if (begin > timeline.to) break;
    const x = Math.max(left, xOf(begin));
    const right = Math.min(left + plotWidth(), Math.max(x + 2, xOf(end)));
    if (right <= covered && request.mark <= coveredMark) continue;
    pen.fillStyle = [ink.bar, ink.notice, ink.error][request.mark];
    pen.fillRect(x, top + 4, right - x, kLaneHeight - 8);
    coveredMark = right > covered + 1 ? request.mark : Math.max(coveredMark, request.mark);
    covered = right;
  }
}

function drawTimeline() {
  if (count === 0) return;
  const grid = gridLines();
  drawAxis(grid);
  const height = timeline.lanes.length * kLaneHeight + 2;
  const pen = prepared(byId('lanes-canvas'), height);
  const ink = {};
  for (const name of ['ink', 'rule', 'bar', 'tick', 'notice', 'error', 'quiet']) {
    ink[name] = colour(name);
  }
  pen.fillStyle = ink.rule;
  for (const value of grid.values) pen.fillRect(Math.round(xOf(value)), 0, 1, height);
  timeline.lanes.forEach((lane, i) => {
    const top = i * kLaneHeight + 1;
    pen.fillStyle = ink.rule;
    if (i > 0) pen.fillRect(0, top - 1, labelWidth() + plotWidth() + 10, 0.5);
    pen.fillStyle = ink.ink;
    pen.fillText(fitted(pen, lane.label, labelWidth() - 12), 2, top + kLaneHeight / 2);
    drawTicks(pen, lane, top, ink);
    drawRequests(pen, lane, top, ink);
  });
  if (timeline.drag) {
    pen.globalAlpha = 0.25;
    pen.fillStyle = ink.bar;
    const [a, b] = timeline.drag;
    pen.fillRect(Math.min(a, b), 0, Math.abs(b - a), height);
    pen.globalAlpha = 1;
  }
}

let drawAsked = false;
function askToDraw() {
  if (drawAsked) return;
  drawAsked = true;
  requestAnimationFrame(() => {
    drawAsked = false;
    drawTimeline();
  });
}

function placeScrollBar() {
  const box = byId('span-scroll');
  const share = (timeline.to - timeline.from) / timeline.fullTo;
  const width = Math.min(1e6, box.clientWidth / share);
  byId('span-inner').style.width = width + 'px';
  timeline.scrolledTo = Math.round(timeline.from / Math.max(1e-9, timeline.fullTo * (1 - share)) *
      (width - box.clientWidth)) || 0;
  box.scrollLeft = timeline.scrolledTo;
}

// Shows a part of the axis, kept within the trace.
function showSpan(from, to) {
  const span = Math.min(timeline.fullTo, Math.max(kSmallestSpan, to - from));
  timeline.from = Math.max(0, Math.min(from, timeline.fullTo - span));
  timeline.to = timeline.from + span;
  placeScrollBar();
  askToDraw();
  timeline.onSpan();
}

function zoom(factor, around) {
  const centre = around === undefined ? (timeline.from + timeline.to) / 2 : around;
  showSpan(centre - (centre - timeline.from) * factor, centre + (timeline.to - centre) * factor);
}

function pan(share) {
  const by = (timeline.to - timeline.from) * share;
  showSpan(timeline.from + by, timeline.to + by);
}

// The line, and its request if a bar is there, below a point of the canvas.
function lineAt(x, y) {
  const lane = timeline.lanes[Math.floor(y / kLaneHeight)];
  if (lane === undefined || x < labelWidth()) return null;
  const reach = 4 / plotWidth() * (timeline.to - timeline.from), value = valueAt(x);
  for (const request of lane.requests || []) {
    if (axis[request.first] - reach <= value && value <= axis[request.last] + reach) {
      return {lane, line: request.first, request};
    }
  }
  const before = lastAtMost(lane.lines.length, value, (i) => axis[lane.lines[i]]);
  const near = [before, before + 1].filter((i) => lane.lines[i] !== undefined)
      .map((i) => lane.lines[i]).sort((a, b) => Math.abs(axis[a] - value) - Math.abs(axis[b] - value));
  if (near.length === 0 || Math.abs(axis[near[0]] - value) > reach) return null;
  return {lane, line: near[0], request: null};
}
