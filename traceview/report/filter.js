// Which lines are shown. What is chosen stands in the address as well, behind the #, so that a view
// can be kept and sent on.

const filter = {q: '', function: '', command: '', level: '', connection: '', marks: '', inSpan: false};
const kFilterFields = ['q', 'function', 'command', 'level', 'connection', 'marks'];

let lowerTexts = null;  // made at the first search

// For every word whether each place, text and command has it.
function searchWord(word) {
  lowerTexts = lowerTexts || raw.texts.map((text) => text.toLowerCase());
  const columns = raw.columns.map((text) => text.toLowerCase().includes(word));
  const places = Uint8Array.from(raw.places, (place) =>
      columns[place[kFunction]] || columns[place[kFile]] || columns[place[kComponent]] ? 1 : 0);
  const texts = Uint8Array.from(lowerTexts, (text) => text.includes(word) ? 1 : 0);
  const owners = Uint8Array.from(requests, (request) =>
      commandName(request.command).toLowerCase().includes(word) ? 1 : 0);
  return {places, texts, owners};
}

function placesWith(column, chosen) {
  return Uint8Array.from(raw.places, (place) => raw.columns[place[column]] === chosen ? 1 : 0);
}

// The indices of the lines that pass, in order. `span` limits them to a part of the axis.
function passingLines(span) {
  const words = filter.q.toLowerCase().split(/\s+/).filter((word) => word !== '' && word !== '-');
  const searches = words.map((word) => word.startsWith('-') ?
      {...searchWord(word.slice(1)), wanted: 0} : {...searchWord(word), wanted: 1});
  const functions = filter.function === '' ? null : placesWith(kFunction, filter.function);
  const levels = filter.level === '' ? null : placesWith(kLevel, filter.level);
  const command = filter.command === '' ? null : Number(filter.command);
  const connection = filter.connection === '' ? null : Number(filter.connection);
  const leastMark = Number(filter.marks);

  const passing = new Int32Array(count);
  let found = 0;
  for (let line = 0; line < count; ++line) {
    const place = trace.place[line], owner = trace.owner[line];
    if (trace.mark[line] < leastMark) continue;
    if (functions !== null && functions[place] === 0) continue;
    if (levels !== null && levels[place] === 0) continue;
    if (command !== null && (owner < 0 || requests[owner].command !== command)) continue;
    if (connection !== null && trace.connection[line] !== connection) continue;
    if (span !== null && (axis[line] < span[0] || axis[line] > span[1])) continue;
    if (searches.every((s) => s.wanted === (s.places[place] | s.texts[trace.text[line]] |
        (owner >= 0 ? s.owners[owner] : 0)))) {
      passing[found++] = line;
    }
  }
  return passing.subarray(0, found);
}

function readAddress() {
  const given = new URLSearchParams(location.hash.slice(1));
  for (const field of kFilterFields) filter[field] = given.get(field) || '';
  if (!/^[012]?$/.test(filter.marks)) filter.marks = '';
  if (!/^\d{0,10}$/.test(filter.command)) filter.command = '';
  if (!/^(-1|\d{1,2})?$/.test(filter.connection)) filter.connection = '';
  return given.get('line') === null ? -1 : Number(given.get('line')) - 1;
}

function writeAddress(line) {
  const kept = new URLSearchParams();
  for (const field of kFilterFields) if (filter[field] !== '') kept.set(field, filter[field]);
  if (line >= 0) kept.set('line', line + 1);
  try {
    history.replaceState(null, '', '#' + kept);
  } catch (refused) {
    // Some browsers refuse this for files, or when it happens often; then the address stays.
  }
}

// The choices that this trace offers; only the most frequent where there are too many.
function fillChoices() {
  const functions = new Map(), levels = new Map(), connections = new Map();
  const perPlace = new Int32Array(raw.places.length);
  for (let line = 0; line < count; ++line) {
    ++perPlace[trace.place[line]];
    const connection = trace.connection[line];
    connections.set(connection, (connections.get(connection) || 0) + 1);
  }
  raw.places.forEach((place, i) => {
    const name = raw.columns[place[kFunction]], level = raw.columns[place[kLevel]];
    functions.set(name, (functions.get(name) || 0) + perPlace[i]);
    if (level !== '') levels.set(level, (levels.get(level) || 0) + perPlace[i]);
  });
  const add = (id, value, label, many) => {
    const option = element('option', visible(label).slice(0, 80) + ' (' + numberText(many) + ')');
    option.value = value;
    byId(id).append(option);
  };
  const commands = new Map();
  for (const request of requests) {
    commands.set(request.command, (commands.get(request.command) || 0) + 1);
  }
  const alike = (a, b) => a[0] < b[0] ? -1 : 1;
  const kMostChoices = 500;
  const named = [...functions].filter(([name]) => name !== '').sort((a, b) => b[1] - a[1]);
  for (const [name, many] of named.slice(0, kMostChoices).sort(alike)) {
    add('function', name, name, many);
  }
  const asked = [...commands].sort((a, b) => b[1] - a[1]).slice(0, kMostChoices);
  for (const [command, many] of asked.sort((a, b) => a[0] - b[0])) {
    add('command', command, commandName(command), many);
  }
  for (const [level, many] of [...levels].slice(0, kMostChoices).sort(alike)) {
    const meaning = levelNames.get(level);
    add('level', level, meaning && meaning !== level ? level + ' \u2013 ' + meaning : level, many);
  }
  for (const [connection, many] of [...connections].sort((a, b) => a[0] - b[0])) {
    add('connection', connection, connection < 0 ? 'none' : String(connection), many);
  }
}
