// Puts the parts together.

function showFiles() {
  const names = raw.files.map(visible);
  const title = raw.title === '' ? 'Trace ' + (names[0] || 'report') : visible(raw.title);
  document.title = title;
  byId('title').textContent = title;
  byId('files').textContent = names.length > 6 ?
      names.slice(0, 6).join(' \u00b7 ') + ' and ' + (names.length - 6) + ' more' :
      names.join(' \u00b7 ');
}

function detailButton(text, action) {
  const button = element('button', text);
  button.type = 'button';
  button.addEventListener('click', action);
  return button;
}

function requestFacts(request) {
  const facts = [['Request', commandName(request.command) + ' (0x' +
      request.command.toString(16) + ')']];
  if (request.duration >= 0) facts.push(['Took', durationText(request.duration)]);
  facts.push(['Result', resultText(request.result)]);
  return facts;
}

function lineFacts(line) {
  const level = textColumn(line, kLevel), meaning = levelNames.get(level);
  const place = textColumn(line, kFile);
  const connection = trace.connection[line], owner = trace.owner[line];
  const process = columnOf(line, kProcess), thread = columnOf(line, kThread);
  return [
    ['Line', numberText(line + 1)],
    ['Time', timeText(line)],
    ['Level', visible(level) + (meaning && meaning !== level ? ' \u2013 ' + meaning : '')],
    ['Function', visible(functionOf(line))],
    ['Written at', place === '' ? '' : visible(place) + ':' + columnOf(line, kLineNumber)],
    ['Component', visible([textColumn(line, kTraceId), textColumn(line, kComponent)].join(' ').trim())],
    ['Process', process === 0 ? '' : process + ', thread ' + thread],
    ['Code', visible([textColumn(line, kCode), textColumn(line, kExtra)].join(' ').trim())],
    ['Layout', kLayoutNames[columnOf(line, kLayout)]],
    ['Connection', connectionText(connection)],
    ...(owner >= 0 ? requestFacts(requests[owner]) : []),
  ].filter(([, value]) => value !== '');
}

function showDetail(line) {
  const facts = element('dl');
  for (const [name, value] of [['Text', visible(textOf(line))], ...lineFacts(line)]) {
    facts.append(element('dt', name), element('dd', value, name === 'Text' ? 'whole' : ''));
  }
  const buttons = element('div', undefined, 'bar');
  const owner = trace.owner[line], connection = trace.connection[line];
  if (owner >= 0) {
    buttons.append(detailButton('Start of the request', () => goToLine(requests[owner].first)),
        detailButton('End of the request', () => goToLine(requests[owner].last)));
  }
  if (connection >= 0) {
    buttons.append(detailButton('Only this connection', () => {
      byId('connection').value = connection;
      applyFilter();
    }));
  }
  byId('detail').replaceChildren(facts, buttons);
  byId('detail').hidden = false;
  writeAddress(line);
}

function applyFilter() {
  for (const field of kFilterFields) filter[field] = byId(field).value;
  filter.inSpan = byId('in-span').checked;
  showPassing(passingLines(filter.inSpan ? [timeline.from, timeline.to] : null));
  if (list.chosen < 0) byId('detail').hidden = true;
  writeAddress(list.chosen < 0 ? -1 : list.passing[list.chosen]);
}

// A rare command may not be among the choices.
function chooseCommand(command) {
  const choices = byId('command');
  choices.value = command;
  if (choices.selectedIndex === -1) {
    const option = element('option', commandName(command));
    option.value = command;
    choices.append(option);
    choices.value = command;
  }
}

function startFilter() {
  let waiting = 0;
  const soon = () => {
    clearTimeout(waiting);
    waiting = setTimeout(applyFilter, 120);
  };
  byId('q').addEventListener('input', soon);
  for (const id of ['function', 'command', 'level', 'connection', 'marks', 'in-span']) {
    byId(id).addEventListener('change', applyFilter);
  }
  byId('filter').addEventListener('submit', (event) => {
    event.preventDefault();
    applyFilter();
    byId('lines').focus();
  });
  byId('filter').addEventListener('reset', () => setTimeout(applyFilter, 0));
  timeline.onSpan = () => { if (filter.inSpan) soon(); };
}

function startKeys() {
  document.addEventListener('keydown', (event) => {
    const typing = /^(INPUT|SELECT|TEXTAREA)$/.test(event.target.tagName);
    if (event.key === '/' && !typing) {
      event.preventDefault();
      byId('q').focus();
    } else if (event.key === 'Escape' && event.target.id === 'q' && byId('q').value !== '') {
      byId('q').value = '';
      applyFilter();
    }
  });
}

function takeAddress() {
  const line = readAddress();
  for (const field of kFilterFields) {
    byId(field).value = filter[field];
    if (byId(field).selectedIndex === -1) byId(field).value = '';
  }
  applyFilter();
  if (line >= 0 && line < count) goToLine(line);
}

function start() {
  byId('main').hidden = false;
  showFiles();
  showSummary();
  fillChoices();
  startTimeline();
  showCommands((command) => {
    chooseCommand(command);
    applyFilter();
    byId('lines').scrollIntoView({block: 'nearest'});
  });
  startLines();
  list.onChoose = showDetail;
  timeline.onClick = (line) => goToLine(line);
  startFilter();
  startKeys();
  measureRows();
  takeAddress();
  window.addEventListener('hashchange', takeAddress);
  window.addEventListener('resize', () => {
    measureRows();
    drawRows();
    placeScrollBar();
    askToDraw();
  });
  placeScrollBar();
  drawTimeline();
  document.documentElement.dataset.readyAfter = Math.round(performance.now());
}

start();
