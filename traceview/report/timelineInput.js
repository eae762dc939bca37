// Mouse, wheel and keys on the time line.

function describe(found) {
  if (found === null) return '';
  const time = timeText(found.line);
  const at = 'line ' + numberText(found.line + 1) + (time ? ', ' + time : '');
  if (found.request === null) {
    return at + ': ' + visible(functionOf(found.line)) + ' ' + visible(textOf(found.line));
  }
  const {command, duration, result} = found.request;
  return found.lane.label + ', ' + at + ': ' + commandName(command) +
      (duration < 0 ? '' : ', ' + durationText(duration)) + ', result ' + resultText(result);
}

function pointIn(event) {
  const box = byId('lanes-canvas').getBoundingClientRect();
  return [event.clientX - box.left, event.clientY - box.top];
}

function listenToDrag(canvas) {
  let from = null;
  canvas.addEventListener('pointerdown', (event) => {
    if (event.button !== 0 || event.pointerType === 'touch') return;
    from = pointIn(event);
    canvas.setPointerCapture(event.pointerId);
  });
  canvas.addEventListener('pointermove', (event) => {
    const at = pointIn(event);
    byId('hover').textContent = describe(lineAt(...at));
    if (from === null) return;
    timeline.drag = [Math.max(labelWidth(), from[0]), Math.max(labelWidth(), at[0])];
    askToDraw();
  });
  canvas.addEventListener('pointerup', (event) => {
    const drag = timeline.drag;
    from = timeline.drag = null;
    if (drag && Math.abs(drag[1] - drag[0]) > 5) {
      showSpan(valueAt(Math.min(...drag)), valueAt(Math.max(...drag)));
    } else {
      const found = lineAt(...pointIn(event));
      if (found !== null) timeline.onClick(found.line);
      askToDraw();
    }
  });
  canvas.addEventListener('pointerleave', () => { byId('hover').textContent = ''; });
  canvas.addEventListener('dblclick', () => showSpan(0, timeline.fullTo));
}

function listenToKeys(lanes) {
  const actions = {
    '+': () => zoom(0.5), '=': () => zoom(0.5), '-': () => zoom(2), '_': () => zoom(2),
    '0': () => showSpan(0, timeline.fullTo),
    'ArrowLeft': () => pan(-0.2), 'ArrowRight': () => pan(0.2),
    'Home': () => pan(-1e9), 'End': () => pan(1e9),
  };
  lanes.addEventListener('keydown', (event) => {
    const action = actions[event.key];
    if (action === undefined || event.ctrlKey || event.metaKey || event.altKey) return;
    event.preventDefault();
    action();
  });
}

// The wheel alone scrolls the page, as everywhere; with Ctrl it zooms, with Shift it moves.
function listenToWheel(lanes) {
  lanes.addEventListener('wheel', (event) => {
    if (!event.ctrlKey && !event.shiftKey) return;
    event.preventDefault();
    const turned = event.deltaY || event.deltaX;
    if (event.shiftKey) pan(Math.sign(turned) * 0.15);
    else zoom(turned > 0 ? 1.25 : 0.8, valueAt(pointIn(event)[0]));
  }, {passive: false});
}

function startTimeline() {
  timeline.fullTo = Math.max(1, count === 0 ? 1 : axis[count - 1]);
  const choose = (byFunction) => {
    timeline.lanes = byFunction ? functionLanes() : connectionLanes();
    byId('by-connection').setAttribute('aria-pressed', String(!byFunction));
    byId('by-function').setAttribute('aria-pressed', String(byFunction));
    askToDraw();
  };
  byId('by-connection').addEventListener('click', () => choose(false));
  byId('by-function').addEventListener('click', () => choose(true));
  byId('zoom-in').addEventListener('click', () => zoom(0.5));
  byId('zoom-out').addEventListener('click', () => zoom(2));
  byId('zoom-all').addEventListener('click', () => showSpan(0, timeline.fullTo));
  listenToDrag(byId('lanes-canvas'));
  listenToKeys(byId('lanes'));
  listenToWheel(byId('lanes'));

  const bar = byId('span-scroll');
  bar.addEventListener('scroll', () => {
    if (Math.abs(bar.scrollLeft - timeline.scrolledTo) < 2) return;
    const span = timeline.to - timeline.from;
    const room = Math.max(1, bar.scrollWidth - bar.clientWidth);
    timeline.from = bar.scrollLeft / room * (timeline.fullTo - span);
    timeline.to = timeline.from + span;
    timeline.scrolledTo = bar.scrollLeft;
    askToDraw();
    timeline.onSpan();
  });
  timeline.to = timeline.fullTo;
  choose(requests.length === 0);
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', askToDraw);
}
