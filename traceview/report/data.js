'use strict';
// The trace: one typed array for each column, and what can be said about one line.

const raw = JSON.parse(document.getElementById('data').textContent);

// The columns of a place, and the layouts of a line, by number.
const kLayout = 0, kProcess = 1, kThread = 2, kTraceId = 3, kLevel = 4, kComponent = 5, kCode = 6,
    kExtra = 7, kFile = 8, kLineNumber = 9, kFunction = 10, kWritten = 11;
const kLayoutNames = ['short', 'long', 'time', 'text', 'error', 'unknown'];
const kNotice = 1, kError = 2;
const kTimeOfDay = 1;

function fromRuns(runs, column) {
  let at = 0;
  for (let i = 0; i < runs.length; i += 2) {
    column.fill(runs[i], at, at + runs[i + 1]);
    at += runs[i + 1];
  }
  return column;
}

function fromDifferences(differences) {
  const column = new Float64Array(differences.length);
  let sum = 0;
  for (let i = 0; i < differences.length; ++i) column[i] = sum += differences[i];
  return column;
}

const count = raw.place.length;
const trace = {
  place: Int32Array.from(raw.place),
  text: Int32Array.from(raw.text),
  time: fromDifferences(raw.time),
  connection: fromRuns(raw.connection, new Int16Array(count)),
  owner: fromRuns(raw.owner, new Int32Array(count)),
  mark: fromRuns(raw.mark, new Uint8Array(count)),
};
const requests = raw.requests.map(([first, last, connection, command, duration, result, mark]) =>
    ({first, last, connection, command, duration, result, mark}));

const hasClock = raw.segments.length > 0;
const millisecondsOnly = hasClock && raw.segments.every((segment) => segment[1] === kTimeOfDay);
// Where lines stand on the time line: at their time, or one behind the other if there is none.
const axis = hasClock ? trace.time : Float64Array.from({length: count}, (_, i) => i);

const commandNames = new Map();
for (let i = 0; i < raw.commands.length; i += 2) {
  commandNames.set(raw.commands[i], raw.commands[i + 1]);
}
const levelNames = new Map(raw.levels);

function commandName(code) {
  return commandNames.get(code) || 'unknown command 0x' + code.toString(16);
}

function columnOf(line, column) { return raw.places[trace.place[line]][column]; }
function textColumn(line, column) { return raw.columns[columnOf(line, column)]; }
function functionOf(line) { return textColumn(line, kFunction); }
function textOf(line) { return raw.texts[trace.text[line]]; }

// Characters that would not be seen, or that would turn the text around them, as \xNN or \uNNNN.
function visible(text) {
  return text.replace(/[\u0000-\u001f\u007f-\u009f\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff]/g,
      (c) => {
        const code = c.charCodeAt(0).toString(16);
        return code.length > 2 ? '\\u' + code.padStart(4, '0') : '\\x' + code.padStart(2, '0');
      });
}

// The last index whose value is at most `value`, or -1; the values never fall.
function lastAtMost(length, value, at) {
  let low = 0, high = length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (at(middle) <= value) low = middle + 1; else high = middle;
  }
  return low - 1;
}

function pad(number, digits) { return String(number).padStart(digits, '0'); }

function clockText(clock, microseconds) {
  if (clock !== kTimeOfDay) return (microseconds / 1e6).toFixed(6);
  const milliseconds = Math.floor(microseconds / 1000);
  const seconds = Math.floor(milliseconds / 1000);
  return pad(Math.floor(seconds / 3600), 2) + ':' + pad(Math.floor(seconds / 60) % 60, 2) + ':' +
      pad(seconds % 60, 2) + ',' + pad(milliseconds % 1000, 3);
}

// The time as it stands in the trace.
function timeText(line) {
  if (columnOf(line, kWritten) >= 0) return visible(textColumn(line, kWritten));
  const found = lastAtMost(raw.segments.length, line, (i) => raw.segments[i][0]);
  if (found < 0) return '';
  const [, clock, offset] = raw.segments[found];
  return clockText(clock, trace.time[line] - offset);
}

function durationText(microseconds) {
  if (microseconds < 0) return '';
  if (microseconds >= 60e6) {
    const seconds = Math.round(microseconds / 1e6), minutes = Math.floor(seconds / 60);
    return minutes < 60 ? minutes + ' min ' + seconds % 60 + ' s' :
        Math.floor(minutes / 60) + ' h ' + minutes % 60 + ' min';
  }
  if (microseconds === 0) return millisecondsOnly ? '< 1 ms' : '0 \u00b5s';
  if (microseconds < 1000) return microseconds + ' \u00b5s';
  const [factor, unit] = microseconds >= 1e6 ? [1e6, ' s'] : [1000, ' ms'];
  const value = microseconds / factor;
  return (value < 10 ? value.toFixed(2) : value < 100 ? value.toFixed(1) : value.toFixed(0))
      .replace(/\.0+$|(\.\d)0$/, '$1') + unit;
}

function resultText(result) {
  return result < 0 ? 'not told' : result > 0xffff ? '0x' + result.toString(16) : String(result);
}

function numberText(number) { return number.toLocaleString('en-GB').replace(/,/g, '\u202f'); }
function connectionText(connection) { return connection < 0 ? '' : String(connection); }
function element(name, text, className) {
  const made = document.createElement(name);
  if (text !== undefined) made.textContent = text;
  if (className) made.className = className;
  return made;
}
function byId(id) { return document.getElementById(id); }
