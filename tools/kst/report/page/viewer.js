// One picture, zoomed and moved, with what stands on it.

const stage = byId('stage');
const view = {
  item: null, rectangles: [], groups: [], rows: [], hover: -1, chosen: -1,
  level: 0, channels: 'RGBA', ground: 0, outlines: true, paddings: false, frees: false,
  width: 1, height: 1, zoom: 1, x: 0, y: 0, fitted: true, sheet: null, canvas: null, svg: null, hatch: null, pixels: null,
};
const overlays = [['outlines', 'Outlines', '#888'], ['paddings', 'Padding', '#3fa9ff'], ['frees', 'Free area', '#e5484d']];

function drawn(tag, attributes, ...children) {
  const node = document.createElementNS('http://www.w3.org/2000/svg', tag);
  for (const [name, value] of Object.entries(attributes)) node.setAttribute(name, value);
  node.append(...children);
  return node;
}

const rectangleOf = ([x, y, width, height], name) => drawn('rect', {class: name, x, y, width, height});
const pathOf = ([x, y, width, height]) => `M${x} ${y}h${width}v${height}h${-width}z`;

/** What a texture covers: a tiled one repeats across the atlas. */
function coveredBy({rect: [x, y, width, height], tiled = [false, false]}) {
  return [tiled[0] ? 0 : x, tiled[1] ? 0 : y, tiled[0] ? view.width : width, tiled[1] ? view.height : height];
}

function paddedBy(texture) {
  const [u, v] = texture.padding || [0, 0];
  const [x, y, width, height] = coveredBy(texture);
  return [x - u, y - v, width + 2 * u, height + 2 * v];
}

function drawTexture(texture) {
  const group = drawn('g', {'data-number': texture.number});
  const covered = coveredBy(texture);
  if (texture.padding && (texture.padding[0] || texture.padding[1]))
    group.append(drawn('path', {class: 'pad', d: pathOf(paddedBy(texture)) + pathOf(covered)}));
  group.append(rectangleOf(covered, 'hit'), rectangleOf(texture.rect, 'under'), rectangleOf(texture.rect, 'line'));
  if (texture.tiled && (texture.tiled[0] || texture.tiled[1])) group.append(rectangleOf(covered, 'tile'));
  return group;
}

/** Hatching over all that no texture and no padding covers. */
function drawFree() {
  const whole = [0, 0, view.width, view.height];
  view.hatch = drawn('pattern', {id: 'hatch', width: 8, height: 8, patternUnits: 'userSpaceOnUse'},
    drawn('rect', {width: 8, height: 8, style: 'fill:#e5484d;fill-opacity:.35'}), drawn('rect', {width: 3, height: 8, style: 'fill:#e5484d;fill-opacity:.6'}));
  const mask = drawn('mask', {id: 'free-mask', maskUnits: 'userSpaceOnUse', x: 0, y: 0, width: view.width, height: view.height});
  const filled = (rectangle, colour) => { const node = rectangleOf(rectangle, ''); node.style.fill = colour; return node; };
  mask.append(filled(whole, '#fff'), ...view.rectangles.map(texture => filled(paddedBy(texture), '#000')));
  const free = filled(whole, 'url(#hatch)');
  free.setAttribute('class', 'free');
  free.setAttribute('mask', 'url(#free-mask)');
  return [drawn('defs', {}, view.hatch, mask), free];
}

// ---- what is shown ----

const placeText = ([x, y, width, height]) => (width ? `${sizeText([width, height])} at ${x}, ${y}` : 'none on the picture');

function paddingText([u, v]) {
  if (u === v) return u ? `${u}` : '';
  return [u ? `${u} \u2194` : '', v ? `${v} \u2195` : ''].filter(Boolean).join(' ');
}

const tiledText = ([u, v]) => (u ? '\u2194' : '') + (v ? '\u2195' : '');

/** What the database and the picture tell of a place, as pairs of label and text; an empty text is nothing to tell. */
function placeFacts({rect, padding = [0, 0], tiled = [false, false], rotation = 0}) {
  return [['Place', placeText(rect)], ['Padding', paddingText(padding)], ['Tiled', tiledText(tiled)], ['Rotated', rotation ? `${rotation}\u00b0` : '']];
}

const placeLine = texture => placeFacts(texture).filter(([, text]) => text)
  .map(([label, text]) => (label === 'Place' ? text : `${label.toLowerCase()} ${text}`)).join(' \u00b7 ');

function factsList(facts) {
  return make('dl.facts-list', {}, ...facts.filter(([, value]) => value !== '' && value !== null && value !== undefined)
    .flatMap(([label, value]) => [make('dt', {}, label), make('dd', {}, value)]));
}

const forcedText = forced => (forced.some(side => side > 0) ? forced.map(side => (side > 0 ? side : 'own')).join(' \u00d7 ') : '');

function showAbout(item) {
  const {image} = item;
  const facts = [['Size', sizeText(image.size) + (image.faces ? ', six faces' : '')], ['Format', image.format], ['Mip levels', image.levels?.length],
    ['File', bytesText(image.bytes)], ['Category', item.category], ['Autoload', item.autoload ? 'yes' : 'no'], ['Mip filter', item.filter]];
  if (item.original && item.original !== item.name) facts.push(['Source', item.original]);
  if (item.forced) facts.push(['Forced size', forcedText(item.forced)]);
  const about = byId('about');
  about.replaceChildren(factsList(facts));
  if (item.used !== null && item.areas) {
    const [textures, padding, total] = item.areas;
    const free = total - textures - padding;
    const row = (colour, label, texels) => [make('i', {style: `background:var(--${colour})`}), make('span', {}, label), make('span', {}, percentText(texels / total))];
    about.append(useBar(item.areas), make('div.legend', {}, ...row('textures', 'Textures', textures), ...row('padding', 'Padding, measured', padding),
      ...row('free', `Free, ${bytesText(Math.round(item.freeBytes))}`, free)));
  }
  if (item.faults.length) about.append(make('ul.faults', {}, ...item.faults.map(fault => make('li', {}, fault))));
}

function showChosen(texture) {
  const box = byId('chosen');
  if (!texture) return box.replaceChildren();
  const facts = placeFacts(texture);
  if (texture.original && texture.original !== texture.name) facts.push(['Source', texture.original]);
  facts.push(['Mip filter', texture.filter], ['Groups', texture.groups], ['Forced size', texture.forced ? forcedText(texture.forced) : '']);
  box.replaceChildren(make('h3', {}, texture.name), factsList(facts));
}

function showList() {
  const isCube = Boolean(view.item.image.faces);
  byId('textures-title').textContent = view.rectangles.length === 0 ? '' : isCube ? 'Faces' : countText(view.rectangles.length, 'texture');
  view.rows = [];
  const sorted = isCube ? view.rectangles : [...view.rectangles].sort((a, b) => byName(a.name, b.name));
  const rows = sorted.map(texture => {
    const row = make('div', {role: 'option', id: `row${texture.number}`}, make('span.cut', {title: texture.name}, texture.name),
      make('span.dim', {}, texture.rect[2] ? sizeText(texture.rect.slice(2)) : 'no place'));
    row.setAttribute('aria-selected', 'false');
    row.onmouseenter = () => setHover(texture.number);
    row.onmouseleave = () => setHover(-1);
    row.onclick = () => choose(texture.number, true);
    view.rows[texture.number] = row;
    return row;
  });
  byId('textures').hidden = rows.length === 0;
  byId('textures').replaceChildren(...rows);
}

function setHover(number) {
  if (number === view.hover) return;
  for (const [at, on] of [[view.hover, false], [number, true]]) {
    view.groups[at]?.classList.toggle('hover', on);
    view.rows[at]?.classList.toggle('hover', on);
  }
  view.hover = number;
}

/** Marks a texture, and with `go` moves the picture to it. */
function choose(number, go) {
  view.groups[view.chosen]?.classList.remove('chosen');
  view.rows[view.chosen]?.setAttribute('aria-selected', 'false');
  view.svg?.querySelector('.shade')?.remove();
  const texture = view.rectangles[number];
  view.chosen = texture ? number : -1;
  history.replaceState(null, '', texture ? `${view.item.route}/t/${number}` : view.item.route);
  showChosen(texture);
  const list = byId('textures');
  if (!texture) return list.removeAttribute('aria-activedescendant');
  view.rows[number].setAttribute('aria-selected', 'true');
  view.rows[number].scrollIntoView({block: 'nearest'});
  list.setAttribute('aria-activedescendant', view.rows[number].id);
  if (!view.groups[number]) return;
  view.groups[number].classList.add('chosen');
  view.svg.append(drawn('path', {class: 'shade', d: pathOf([0, 0, view.width, view.height]) + pathOf(texture.rect)}), view.groups[number]);
  if (go) zoomTo(texture.rect);
}

// ---- zoom and place ----

function place() {
  const {sheet, canvas} = view;
  if (!sheet) return;
  sheet.style.width = `${view.width * view.zoom}px`;
  sheet.style.height = `${view.height * view.zoom}px`;
  sheet.style.transform = `translate(${Math.round(view.x)}px, ${Math.round(view.y)}px)`;
  view.hatch.setAttribute('patternTransform', `scale(${1 / view.zoom}) rotate(45)`);
  canvas.classList.toggle('sharp', view.width * view.zoom >= canvas.width);
  byId('zoom').textContent = `${Math.round(view.zoom * 100)} %`;
}

/** Zooms about a point of the stage, by default its middle. */
function setZoom(zoom, x = stage.clientWidth / 2, y = stage.clientHeight / 2) {
  const before = view.zoom;
  view.zoom = Math.min(Math.max(zoom, 1 / 64), 64);
  view.x = x - ((x - view.x) * view.zoom) / before;
  view.y = y - ((y - view.y) * view.zoom) / before;
  view.fitted = false;
  place();
}

function centre([x, y, width, height], zoom) {
  view.zoom = Math.max(zoom, 1 / 64);
  view.x = stage.clientWidth / 2 - (x + width / 2) * view.zoom;
  view.y = stage.clientHeight / 2 - (y + height / 2) * view.zoom;
  place();
}

const fitting = ([, , width, height], share) => Math.min((stage.clientWidth * share) / width, (stage.clientHeight * share) / height);

function fit() {
  const whole = [0, 0, view.width, view.height];
  centre(whole, Math.min(fitting(whole, 0.92), 16));
  view.fitted = true;
}

function zoomTo(rectangle) {
  // Not so close that one sees nothing of what is around.
  centre(rectangle, Math.max(Math.min(fitting(rectangle, 0.4), 8), Math.min(fitting([0, 0, view.width, view.height], 0.92), 16)));
  view.fitted = false;
}

function pan(x, y) {
  view.x += x;
  view.y += y;
  view.fitted = false;
  place();
}

// ---- levels and channels ----

let drawing = 0;

async function drawLevel() {
  const {image} = view.item;
  if (!image.levels) return;
  const {size, picture} = image.levels[view.level];
  const reduced = picture[1] < size[0] || picture[2] < size[1];
  const told = image.faces ? [size[0] / 4, size[1] / 3] : size;
  const text = image.levels.length === 1 ? 'One level' : `Level ${view.level} of ${image.levels.length - 1}`;
  byId('level').textContent = `${text}, ${sizeText(told)}`;
  byId('level').title = reduced ? `Shown with ${sizeText(picture.slice(1, 3))} texels; --max-size sets the limit` : '';
  byId('level').classList.toggle('dim', reduced);
  byId('level-down').disabled = view.level === 0;
  byId('level-up').disabled = view.level === image.levels.length - 1;
  const turn = ++drawing;
  const {canvas} = view;
  try {
    const channels = await decodePicture(picture);
    // Keys may have gone on meanwhile.
    if (turn !== drawing) return;
    view.pixels = channels;
    drawPixels(canvas, viewPixels(channels, view.channels));
    canvas.dataset.level = view.level;
    canvas.dataset.channels = view.channels;
    place();
  } catch (error) {
    console.error(error);
  }
}

function setLevel(level) {
  const count = view.item.image.levels?.length || 1;
  view.level = Math.min(Math.max(level, 0), count - 1);
  drawLevel();
}

function setChannels(channels) {
  view.channels = channels;
  [...byId('channels').children].forEach((button, at) => button.setAttribute('aria-pressed', channelViews[at] === channels));
  drawLevel();
}

const grounds = [['checks', 'Checkerboard'], ['black', 'Black'], ['white', 'White']];

/** What is seen through transparent texels. */
function setGround(ground) {
  view.ground = ground % grounds.length;
  byId('ground').textContent = grounds[view.ground][1];
  grounds.forEach(([name], at) => view.sheet?.classList.toggle(name, at === view.ground));
}

function toggleOverlay(name) {
  view[name] = !view[name];
  overlays.forEach(([key], at) => byId('overlays').children[at].setAttribute('aria-pressed', view[key]));
  for (const [key] of overlays) view.sheet?.classList.toggle(key, view[key]);
}

// ---- opening ----

/** The pictures that the viewer walks through: the atlases as they are sorted, or the images of the set. */
function neighbours(item) {
  if (item.kind === 'image') return sets.find(set => set.images.includes(item)).images;
  return [...atlases].sort((a, b) => sortings[gallery.sort][1](a, b) || byName(a.name, b.name));
}

function openItem(item, chosen) {
  const {levels, size, faces} = item.image;
  Object.assign(view, {item, rectangles: item.rectangles, hover: -1, chosen: -1, level: 0, pixels: null});
  byId('texel').hidden = true;
  // A cube map's picture holds its opened faces.
  [view.width, view.height] = levels ? levels[0].size : size.map(side => side || 1);
  byId('viewer').querySelector('.back').href = item.up;
  const [folder, name] = splitName(item.kind === 'image' ? `${item.set}/${item.name}` : item.name);
  byId('viewer-title').replaceChildren(make('span.dim', {}, folder), name);
  const row = neighbours(item);
  const at = row.indexOf(item);
  byId('place').textContent = `${at + 1} of ${row.length}`;
  byId('previous').disabled = at === 0;
  byId('next').disabled = at === row.length - 1;
  byId('overlays').hidden = item.rectangles.length === 0;
  for (const button of [...byId('overlays').children].slice(1)) button.hidden = Boolean(faces);
  stage.setAttribute('aria-label', `${item.name}, ${sizeText(size)}`);
  showAbout(item);
  showList();
  if (levels) showSheet();
  else {
    Object.assign(view, {sheet: null, canvas: null, svg: null, groups: []});
    stage.replaceChildren(make('div.message', {}, item.faults.join('\n') || 'No picture'));
    byId('level').textContent = '';
  }
  choose(chosen ?? -1, true);
}

function showSheet() {
  view.canvas = make('canvas', {width: 1, height: 1});
  view.svg = drawn('svg', {viewBox: `0 0 ${view.width} ${view.height}`, preserveAspectRatio: 'none', 'aria-hidden': 'true'});
  view.groups = view.rectangles.map(texture => (texture.rect[2] ? drawTexture(texture) : undefined));
  view.svg.append(...drawFree(), ...view.groups.filter(Boolean));
  view.sheet = make('div.sheet', {}, view.canvas, view.svg);
  for (const [key] of overlays) view.sheet.classList.toggle(key, view[key]);
  stage.replaceChildren(view.sheet);
  setGround(view.ground);
  fit();
  drawLevel();
}

function step(by) {
  const row = neighbours(view.item);
  const next = row[row.indexOf(view.item) + by];
  if (next) location.hash = next.route;
}

// ---- pointer ----

function showTip(event, number) {
  const texture = view.rectangles[number];
  const tip = byId('tip');
  tip.hidden = !texture;
  if (!texture) return;
  tip.replaceChildren(texture.name, make('span', {}, placeLine(texture)));
  const box = tip.getBoundingClientRect();
  tip.style.left = `${Math.min(event.clientX + 14, innerWidth - box.width - 8)}px`;
  tip.style.top = `${event.clientY + 18 + box.height > innerHeight ? event.clientY - box.height - 10 : event.clientY + 18}px`;
}

/** The values in the file under the pointer, on the level that is shown. */
function showTexel(event) {
  const box = view.canvas?.getBoundingClientRect();
  const [colour, alpha] = view.pixels || [];
  const output = byId('texel');
  output.hidden = !box || !colour || event.clientX < box.left || event.clientX >= box.right || event.clientY < box.top || event.clientY >= box.bottom;
  if (output.hidden) return;
  const x = Math.floor(((event.clientX - box.left) / box.width) * colour.width);
  const y = Math.floor(((event.clientY - box.top) / box.height) * colour.height);
  const at = (y * colour.width + x) * 4;
  output.textContent = `${x}, ${y}   R ${colour.data[at]}  G ${colour.data[at + 1]}  B ${colour.data[at + 2]}  A ${alpha ? alpha.data[at] : 255}`;
}

const numberAt = event => Number(event.target.closest?.('g[data-number]')?.dataset.number ?? -1);

function startPointer() {
  let drag = null;
  stage.addEventListener('pointerdown', event => {
    if (event.button > 1) return;
    drag = {x: event.clientX, y: event.clientY, number: numberAt(event), moved: false};
    stage.setPointerCapture(event.pointerId);
  });
  stage.addEventListener('pointermove', event => {
    showTexel(event);
    if (!drag) {
      setHover(numberAt(event));
      return showTip(event, view.hover);
    }
    const [x, y] = [event.clientX - drag.x, event.clientY - drag.y];
    if (!drag.moved && Math.hypot(x, y) < 4) return;
    Object.assign(drag, {x: event.clientX, y: event.clientY, moved: true});
    stage.classList.add('dragging');
    byId('tip').hidden = true;
    pan(x, y);
  });
  stage.addEventListener('pointerup', () => {
    if (drag && !drag.moved) choose(drag.number, false);
    drag = null;
    stage.classList.remove('dragging');
  });
  stage.addEventListener('pointercancel', () => { drag = null; });
  stage.addEventListener('pointerleave', () => { setHover(-1); byId('tip').hidden = byId('texel').hidden = true; });
  stage.addEventListener('dblclick', () => (view.fitted ? setZoom(1) : fit()));
  stage.addEventListener('wheel', event => {
    event.preventDefault();
    const box = stage.getBoundingClientRect();
    const lines = event.deltaMode === 1 ? event.deltaY * 16 : event.deltaY;
    setZoom(view.zoom * Math.exp(-lines / 400), event.clientX - box.left, event.clientY - box.top);
  }, {passive: false});
  // Hidden, the stage has no size.
  new ResizeObserver(() => (view.item && view.fitted && stage.clientWidth ? fit() : null)).observe(stage);
}

function startViewer() {
  makeChoice(byId('channels'), channelViews.map(name => [name, name]), 'RGBA', setChannels);
  byId('overlays').append(...overlays.map(([name, label, colour]) => {
    const button = make('button', {type: 'button', style: `--key:${colour}`}, label);
    button.setAttribute('aria-pressed', view[name]);
    button.onclick = () => toggleOverlay(name);
    return button;
  }));
  const buttons = {previous: () => step(-1), next: () => step(1), 'level-down': () => setLevel(view.level - 1), 'level-up': () => setLevel(view.level + 1),
    'zoom-in': () => setZoom(view.zoom * 1.5), 'zoom-out': () => setZoom(view.zoom / 1.5), zoom: () => setZoom(1), 'zoom-fit': fit,
    ground: () => setGround(view.ground + 1)};
  for (const [id, action] of Object.entries(buttons)) byId(id).onclick = action;
  setGround(0);
  startPointer();
}
