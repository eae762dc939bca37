// The list of lines. Only the rows in view exist; the spacer gives the scroll bar its length.

const kTallest = 8e6;  // pixels; browsers stop at different heights above this
const kSpare = 6;      // rows beyond the visible ones
const kMostPrinted = 1000;

const list = {passing: new Int32Array(0), chosen: -1, top: 0, rowHeight: 22, onChoose: () => {}};

function visibleRows() { return Math.ceil(byId('lines').clientHeight / list.rowHeight); }
function fullHeight() { return Math.min(kTallest, list.passing.length * list.rowHeight); }

// Which row is at the top, with its share that is scrolled away already.
function topRow() {
  const box = byId('lines');
  const room = fullHeight() - box.clientHeight;
  if (room <= 0) return 0;
  const last = list.passing.length - box.clientHeight / list.rowHeight;
  return Math.min(1, box.scrollTop / room) * last;
}

function scrollToRow(row) {
  const box = byId('lines');
  const last = list.passing.length - box.clientHeight / list.rowHeight;
  box.scrollTop = last <= 0 ? 0 : Math.min(1, Math.max(0, row / last)) *
      (fullHeight() - box.clientHeight);
}

function rowOf(line, index) {
  const mark = trace.mark[line];
  const row = element('div', undefined,
      'row' + (mark === kError ? ' error' : mark === kNotice ? ' notice' : ''));
  const sign = mark === kError ? '\u25b2 ' : mark === kNotice ? '\u25cf ' : '';
  row.append(element('span', numberText(line + 1)), element('span', timeText(line)),
      element('span', connectionText(trace.connection[line])),
      element('span', visible(functionOf(line))), element('span', sign + visible(textOf(line))));
  if (index >= 0) {
    row.setAttribute('role', 'row');
    row.setAttribute('aria-rowindex', index + 1);
    for (const cell of row.children) cell.setAttribute('role', 'gridcell');
    row.id = 'row-' + index;
    row.dataset.index = index;
  }
  return row;
}

function drawRows() {
  const top = topRow(), first = Math.max(0, Math.floor(top));
  const end = Math.min(list.passing.length, first + visibleRows() + kSpare);
  const rows = [];
  for (let index = first; index < end; ++index) {
    const row = rowOf(list.passing[index], index);
    if (index === list.chosen) {
      row.classList.add('chosen');
      row.setAttribute('aria-selected', 'true');
    }
    rows.push(row);
  }
  const box = byId('rows');
  box.replaceChildren(...rows);
  box.style.transform = 'translateY(' + -(top - first) * list.rowHeight + 'px)';
  if (list.chosen >= first && list.chosen < end) {
    byId('lines').setAttribute('aria-activedescendant', 'row-' + list.chosen);
  } else {
    byId('lines').removeAttribute('aria-activedescendant');
  }
}

function measureRows() {
  const row = element('div', 'x', 'row');
  byId('rows').append(row);
  list.rowHeight = row.getBoundingClientRect().height || 22;
  row.remove();
  byId('spacer').style.height = fullHeight() + 'px';
}

function showPassing(passing) {
  const line = list.chosen >= 0 ? list.passing[list.chosen] : -1;
  list.passing = passing;
  byId('lines').setAttribute('aria-rowcount', passing.length);
  byId('lines').hidden = passing.length === 0;
  byId('none').hidden = passing.length > 0;
  byId('shown').textContent = passing.length === count ? numberText(count) + ' lines' :
      numberText(passing.length) + ' of ' + numberText(count) + ' lines';
  byId('spacer').style.height = fullHeight() + 'px';
  const kept = line < 0 ? -1 : lastAtMost(passing.length, line, (i) => passing[i]);
  list.chosen = kept >= 0 && passing[kept] === line ? kept : -1;
  if (list.chosen >= 0) scrollToRow(list.chosen - visibleRows() / 2);
  else byId('lines').scrollTop = 0;
  drawRows();
}

// Chooses a row and brings it into view.
function choose(index, centred) {
  if (list.passing.length === 0) return;
  list.chosen = Math.max(0, Math.min(list.passing.length - 1, index));
  const top = topRow(), whole = Math.floor(byId('lines').clientHeight / list.rowHeight);
  if (centred) scrollToRow(list.chosen - whole / 2);
  else if (list.chosen < top) scrollToRow(list.chosen);
  else if (list.chosen > top + whole - 1) scrollToRow(list.chosen - whole + 1);
  drawRows();
  list.onChoose(list.passing[list.chosen]);
}

// Goes to a line of the trace, or to the next one that passes the filter.
function goToLine(line) {
  const before = lastAtMost(list.passing.length, line, (i) => list.passing[i]);
  choose(before >= 0 && list.passing[before] === line ? before : before + 1, true);
}

function nextError(step) {
  for (let i = list.chosen + step; i >= 0 && i < list.passing.length; i += step) {
    if (trace.mark[list.passing[i]] === kError) return choose(i, true);
  }
}

function startLines() {
  const box = byId('lines');
  let asked = false;
  box.addEventListener('scroll', () => {
    if (asked) return;
    asked = true;
    requestAnimationFrame(() => {
      asked = false;
      drawRows();
    });
  }, {passive: true});
  box.addEventListener('click', (event) => {
    const row = event.target.closest('.row');
    if (row !== null && String(getSelection()) === '') choose(Number(row.dataset.index), false);
  });
  box.addEventListener('keydown', (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey) return;
    const page = Math.max(1, Math.floor(box.clientHeight / list.rowHeight) - 1);
    const moves = {ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page, Home: -Infinity,
      End: Infinity};
    if (event.key in moves) choose(Math.max(list.chosen, -1) + moves[event.key], false);
    else if (event.key === 'e') nextError(1);
    else if (event.key === 'E') nextError(-1);
    else return;
    event.preventDefault();
  });
  // On paper there is nothing to scroll.
  window.addEventListener('beforeprint', () => {
    const rows = [...list.passing.subarray(0, kMostPrinted)].map((line) => rowOf(line, -1));
    if (list.passing.length > kMostPrinted) {
      rows.push(element('p', '\u2026 and ' +
          numberText(list.passing.length - kMostPrinted) + ' more lines'));
    }
    byId('printed').replaceChildren(...rows);
    drawTimeline();
  });
  window.addEventListener('afterprint', () => {
    byId('printed').replaceChildren();
    askToDraw();
  });
}
