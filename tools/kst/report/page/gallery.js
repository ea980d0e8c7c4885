// The gallery of all atlases and sets, and the page of one set.

function useBar([textures, padding, total]) {
  const share = texels => `width:${total ? (texels / total) * 100 : 0}%`;
  return make('div.bar-of-use', {'aria-hidden': 'true'}, make('i', {style: share(textures)}), make('i', {style: share(padding)}));
}

function makeCard(item) {
  const isSet = item.kind === 'set';
  const [folder, name] = splitName(item.name);
  const shown = isSet ? item.images.slice(0, 4) : [item];
  const picture = make(`div.picture.checks${['', '', '.two', '.four', '.four'][shown.length]}`, {}, ...shown.map(one => thumbnail(one.image)));
  if (shown.length === 0) picture.append(make('span.dim', {}, 'Empty set'));
  if (item.faults.length) picture.append(make('span.badge', {}, countText(item.faults.length, 'fault')));
  const facts = isSet ? `${countText(item.count, 'image')} \u00b7 ${bytesText(item.bytes)}`
    : `${sizeText(item.image.size)}${item.image.faces ? ' cube' : ''} \u00b7 ${item.image.format || 'unreadable'}`;
  const card = make('a.card', {href: item.route, title: item.name},
    picture,
    make('div.text', {},
      item.kind === 'image' ? null : make('div.folder.cut', {}, folder || '\u00a0'),
      make('div.name.cut', {}, name),
      make('div.facts.cut', {}, facts),
      item.used === null ? null : make('div.use', {}, useBar(item.areas), make(item.used < 0.6 ? 'b.low' : 'b', {}, percentText(item.used)))));
  const spoken = [item.name, facts, ...(item.used === null ? [] : [`${percentText(item.used)} used`])];
  if (item.faults.length) spoken.push(countText(item.faults.length, 'fault'));
  card.setAttribute('aria-label', spoken.join(', '));
  return card;
}

// ---- sorting and filtering ----

const unused = item => (item.used === null ? 2 : item.used);
const sortings = {
  worst: ['Worst used first', (a, b) => unused(a) - unused(b)],
  best: ['Best used first', (a, b) => (b.used ?? -1) - (a.used ?? -1)],
  free: ['Most wasted bytes first', (a, b) => b.freeBytes - a.freeBytes],
  bytes: ['Largest files first', (a, b) => b.bytes - a.bytes],
  count: ['Most textures first', (a, b) => b.count - a.count],
  name: ['By name', () => 0],
};
const kinds = {
  all: ['All', () => true],
  atlas: ['Atlases', item => item.kind === 'atlas'],
  set: ['Texture sets', item => item.kind === 'set'],
  faults: ['With faults', item => item.faults.length > 0],
};
const gallery = {kind: 'all', sort: 'worst', matches: null};

/** Lays the cards anew. A search hides what holds none of its textures. */
function layGallery() {
  let shown = 0;
  for (const [id, items, one, many] of [['atlases', atlases, 'atlas', 'atlases'], ['sets', sets, 'texture set', 'texture sets']]) {
    const kept = items
      .filter(kinds[gallery.kind][1])
      .filter(item => !gallery.matches || gallery.matches.has(item))
      .sort((a, b) => sortings[gallery.sort][1](a, b) || byName(a.name, b.name));
    for (const item of kept) item.card ??= makeCard(item);
    const section = byId(id);
    section.hidden = kept.length === 0;
    section.querySelector('h2').textContent = countText(kept.length, one, many);
    section.querySelector('.cards').replaceChildren(...kept.map(item => item.card));
    shown += kept.length;
  }
  byId('nothing').hidden = shown > 0;
}

function showTotals() {
  const sum = (items, value) => items.reduce((total, item) => total + value(item), 0);
  const areas = [0, 1, 2].map(i => sum(atlases.filter(item => item.used !== null), item => item.areas[i]));
  const figure = (value, label) => make('div', {}, make('b', {}, value), make('span', {}, label));
  const counted = (items, one, many, content) => (items.length === 0 ? [] : [
    figure(decimals(items.length, 0), items.length === 1 ? one : many), figure(decimals(sum(items, item => item.count), 0), content)]);
  const figures = [
    ...counted(atlases, 'atlas', 'atlases', 'textures in atlases'),
    ...counted(sets, 'texture set', 'texture sets', 'images in sets'),
    figure(bytesText(sum(atlases, item => item.bytes) + sum(sets, item => item.bytes)), 'all image files'),
  ];
  if (areas[2]) {
    figures.push(figure(bytesText(sum(atlases, item => item.freeBytes)), 'wasted on free area'));
    const [textures, padding] = areas.map(area => area / areas[2]);
    figures.push(make('div.use', {}, make('b', {}, `${percentText(textures + padding)} used`), useBar(areas),
      make('span', {}, `textures ${percentText(textures)}, padding ${percentText(padding)}, free ${percentText(1 - textures - padding)}`)));
  }
  byId('totals').append(...figures);
}

function showFaults() {
  const faults = [...atlases, ...sets].flatMap(item => item.faults);
  const box = byId('faults');
  box.hidden = faults.length === 0;
  box.querySelector('summary').textContent = `${countText(faults.length, 'fault')} in the outputs`;
  box.querySelector('ul').append(...faults.map(fault => make('li', {}, fault)));
  return faults.length;
}

/** A row of buttons of which one is pressed. */
function makeChoice(box, choices, chosen, choose) {
  const buttons = choices.map(([key, label]) => {
    const button = make('button', {type: 'button'}, label);
    button.setAttribute('aria-pressed', key === chosen);
    button.onclick = () => {
      for (const other of buttons) other.setAttribute('aria-pressed', other === button);
      choose(key);
    };
    return button;
  });
  box.append(...buttons);
  return buttons;
}

function startGallery() {
  showTotals();
  const hasFaults = showFaults() > 0;
  makeChoice(byId('kinds'), Object.entries(kinds).filter(([key]) => key !== 'faults' || hasFaults).map(([key, [label]]) => [key, label]),
    'all', key => { gallery.kind = key; layGallery(); });
  const sort = byId('sort');
  sort.append(...Object.entries(sortings).map(([key, [label]]) => make('option', {value: key}, label)));
  sort.onchange = () => { gallery.sort = sort.value; layGallery(); };
  layGallery();
}

function showSet(set) {
  const view = byId('set');
  view.querySelector('h2').textContent = set.name;
  view.querySelector('p').textContent = `${countText(set.count, 'image')}, ${bytesText(set.bytes)}`;
  for (const image of set.images) image.card ??= makeCard(image);
  view.querySelector('.cards').replaceChildren(...set.images.map(image => image.card));
}

/** The card that an arrow key leads to, by where the cards stand. */
function neighbourCard(card, key) {
  const cards = [...card.closest('main').querySelectorAll('.card')];
  const at = cards.indexOf(card);
  if (key === 'ArrowLeft') return cards[at - 1];
  if (key === 'ArrowRight') return cards[at + 1];
  if (key === 'Home') return cards[0];
  if (key === 'End') return cards[cards.length - 1];
  const down = key === 'ArrowDown';
  const here = card.getBoundingClientRect();
  const beyond = cards.map(other => [other, other.getBoundingClientRect()])
    .filter(([, box]) => (down ? box.top >= here.bottom : box.bottom <= here.top));
  const distance = ([, box]) => Math.abs(box.top - here.top) * 1000 + Math.abs(box.left - here.left);
  return beyond.sort((a, b) => distance(a) - distance(b))[0]?.[0];
}
