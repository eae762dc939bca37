// The summary, and what each command cost.

function addFigure(name, value, small, bad) {
  const box = element('div', undefined, bad ? 'bad' : '');
  const dd = element('dd', value);
  if (small) dd.append(element('span', small, 'small'));
  box.append(element('dt', name), dd);
  byId('summary').append(box);
}

function showSummary() {
  let errors = 0, notices = 0;
  for (const mark of trace.mark) {
    if (mark === kError) ++errors;
    if (mark === kNotice) ++notices;
  }
  const timed = hasClock ? raw.segments[0][0] : -1;
  const last = count - 1;
  addFigure('Lines', numberText(count),
      raw.files.length + (raw.files.length === 1 ? ' file' : ' files'));
  if (timed >= 0) {
    let end = last;
    while (end > timed && timeText(end) === '') --end;
    addFigure('Time span', durationText(trace.time[last]) || '0',
        timeText(timed) + ' \u2013 ' + timeText(end));
  } else {
    addFigure('Time span', '\u2013', 'the lines carry no time');
  }
  const failed = requests.filter((request) => request.mark === kError).length;
  const refused = requests.filter((request) => request.mark === kNotice).length;
  addFigure('Requests', numberText(requests.length),
      (failed === 0 ? 'none with an error' : numberText(failed) + ' with an error') + ', ' +
      (refused === 0 ? 'none' : numberText(refused)) + ' with a result other than 0');
  const connections = new Set(trace.connection);
  connections.delete(-1);
  addFigure('Connections', numberText(connections.size), 'of 64');
  addFigure('Functions', numberText(new Set(raw.places.map((place) => place[kFunction])).size));
  addFigure('Error lines', numberText(errors), numberText(notices) + ' with a result other than 0',
      errors > 0);
}

// Bounds of the histogram in steps of 1, 2, 5 that cover all durations.
function binBounds(durations) {
  const least = millisecondsOnly ? 1000 : 1;
  let low = Infinity, high = 0;
  for (const duration of durations) {
    low = Math.min(low, Math.max(least, duration));
    high = Math.max(high, duration);
  }
  const bounds = [];
  for (let power = least; power <= 1e12; power *= 10) {
    for (const factor of [1, 2, 5]) {
      const bound = power * factor;
      if (bound > low) bounds.push(bound);
      if (bound > high) return bounds;
    }
  }
  return bounds;
}

function binText(bounds, i) {
  if (i === 0) return 'below ' + durationText(bounds[0]);
  return durationText(bounds[i - 1]) + ' to ' + durationText(bounds[i]);
}

function histogram(sorted, bounds) {
  const bins = new Array(bounds.length).fill(0);
  for (const duration of sorted) {
    const bin = bounds.findIndex((bound) => duration < bound);
    ++bins[bin < 0 ? bounds.length - 1 : bin];
  }
  const most = Math.max(1, ...bins);
  const box = element('div', undefined, 'bins');
  const spoken = [];
  bins.forEach((many, i) => {
    const bar = element('span', undefined, many === 0 ? 'empty' : '');
    if (many > 0) {
      bar.style.height = Math.max(8, many / most * 100) + '%';
      spoken.push(binText(bounds, i) + ': ' + many);
    }
    bar.title = binText(bounds, i) + ': ' + numberText(many);
    box.append(bar);
  });
  box.setAttribute('role', 'img');
  box.setAttribute('aria-label', spoken.join(', '));
  return box;
}

// The smallest duration that this share of the requests did not exceed.
function quantile(sorted, share) {
  return sorted[Math.max(0, Math.ceil(sorted.length * share) - 1)];
}

function commandRow(command, group, bounds, onChoose) {
  const row = element('tr');
  const name = element('button', visible(commandName(command)), 'link');
  name.type = 'button';
  name.title = 'Show the lines of these requests';
  name.addEventListener('click', () => onChoose(command));
  const first = element('td');
  first.append(name);
  const failed = group.filter((request) => request.mark === kError).length;
  const refused = group.filter((request) => request.mark === kNotice).length;
  const sorted = group.map((request) => request.duration).filter((duration) => duration >= 0)
      .sort((a, b) => a - b);
  row.append(first, element('td', numberText(group.length), 'n'),
      element('td', numberText(failed), failed > 0 ? 'n bad' : 'n'),
      element('td', numberText(refused), refused > 0 ? 'n odd' : 'n'));
  for (const share of [0.5, 0.95, 1]) {
    row.append(element('td', sorted.length === 0 ? '\u2013' :
        durationText(quantile(sorted, share)), 'n'));
  }
  const last = element('td');
  if (sorted.length > 0) last.append(histogram(sorted, bounds));
  row.append(last);
  return row;
}

function showCommands(onChoose) {
  const groups = new Map();
  for (const request of requests) {
    if (!groups.has(request.command)) groups.set(request.command, []);
    groups.get(request.command).push(request);
  }
  byId('commands-none').hidden = groups.size > 0;
  byId('commands-box').hidden = groups.size === 0;
  if (groups.size === 0) return;
  const durations = requests.map((request) => request.duration).filter((d) => d >= 0);
  const bounds = durations.length === 0 ? [] : binBounds(durations);
  const kMostRows = 200;
  const sorted = [...groups].sort((a, b) => b[1].length - a[1].length || a[0] - b[0]);
  const body = byId('commands').tBodies[0];
  for (const [command, group] of sorted.slice(0, kMostRows)) {
    body.append(commandRow(command, group, bounds, onChoose));
  }
  if (bounds.length > 0) {
    const scale = element('div', undefined, 'scale');
    scale.append(element('span', '< ' + durationText(bounds[0])),
        element('span', 'how long they took'),
        element('span', '< ' + durationText(bounds[bounds.length - 1])));
    byId('bins-title').replaceChildren(scale);
  }
  const notes = [];
  if (sorted.length > kMostRows) notes.push('The ' + kMostRows + ' most frequent are shown.');
  if (durations.length === 0) notes.push('The lines carry no time, so nothing is known about how long requests took.');
  else notes.push('From the line that takes a request up to the last line of its pass' +
      (millisecondsOnly ? '; this layout counts whole milliseconds.' : '.'));
  byId('commands-note').textContent = notes.join(' ');
}
