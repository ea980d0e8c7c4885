// The search over the textures of all atlases and the images of all sets.

const mostResults = 100;
const searched = [
  ...atlases.flatMap(item => item.rectangles.map(texture => ({
    name: texture.name, also: texture.original, where: item.name, item, route: `${item.route}/t/${texture.number}`}))),
  ...sets.flatMap(set => set.images.map(image => ({name: image.name, also: image.original, where: set.name, item: set, route: image.route}))),
].map(entry => ({...entry, text: `${entry.name}\n${entry.also}`.toLowerCase()}));

const search = {box: byId('search'), list: byId('results'), at: -1};

/** A name with the letters that were searched for marked. */
function marked(name, words) {
  const at = name.toLowerCase().indexOf(words);
  if (at < 0) return [name];
  return [name.slice(0, at), make('mark', {}, name.slice(at, at + words.length)), name.slice(at + words.length)];
}

function setResults(words) {
  const found = words === '' ? [] : searched.filter(entry => entry.text.includes(words));
  const rank = entry => (entry.name.toLowerCase() === words ? 0 : entry.name.toLowerCase().startsWith(words) ? 1 : 2);
  found.sort((a, b) => rank(a) - rank(b) || byName(a.name, b.name) || byName(a.where, b.where));
  search.at = -1;
  search.box.removeAttribute('aria-activedescendant');
  gallery.matches = words === '' ? null : new Set(found.map(entry => entry.item));
  layGallery();
  const places = gallery.matches ? gallery.matches.size : 0;
  const told = found.length === 0 ? 'No texture of that name' : `${countText(found.length, 'texture')} in ${countText(places, 'place')}`;
  const rest = found.length > mostResults ? [make('p', {role: 'presentation'}, `and ${decimals(found.length - mostResults, 0)} more`)] : [];
  search.list.replaceChildren(make('p', {role: 'presentation'}, told), ...found.slice(0, mostResults).map((entry, number) => {
    const alias = entry.also && entry.also !== entry.name ? make('span.dim', {}, ` (${entry.also})`) : null;
    const link = make('a', {href: entry.route, id: `result${number}`, role: 'option', tabIndex: -1},
      make('span.cut', {}, ...marked(entry.name, words), ...(alias ? [alias] : [])), make('span.cut', {}, entry.where));
    link.setAttribute('aria-selected', 'false');
    link.onclick = () => openResults(false);
    return link;
  }), ...rest);
  openResults(words !== '');
  byId('status').textContent = words === '' ? '' : told;
}

function openResults(open) {
  search.list.hidden = !open;
  search.box.setAttribute('aria-expanded', open);
}

function moveResult(by) {
  const links = search.list.querySelectorAll('a');
  if (links.length === 0) return;
  links[search.at]?.setAttribute('aria-selected', 'false');
  search.at = (search.at + by + links.length + (search.at < 0 && by < 0 ? 1 : 0)) % links.length;
  links[search.at].setAttribute('aria-selected', 'true');
  links[search.at].scrollIntoView({block: 'nearest'});
  search.box.setAttribute('aria-activedescendant', links[search.at].id);
}

function searchKey(event) {
  if (event.key === 'ArrowDown' || event.key === 'ArrowUp') {
    openResults(search.box.value.trim() !== '');
    moveResult(event.key === 'ArrowDown' ? 1 : -1);
  } else if (event.key === 'Enter') {
    search.list.querySelectorAll('a')[Math.max(search.at, 0)]?.click();
    search.box.blur();
  } else if (event.key === 'Escape') {
    if (search.list.hidden || search.box.value === '') search.box.blur();
    search.box.value = '';
    setResults('');
  } else return;
  event.preventDefault();
}

function startSearch() {
  search.box.oninput = () => setResults(search.box.value.trim().toLowerCase());
  search.box.onfocus = () => openResults(search.box.value.trim() !== '');
  search.box.onkeydown = searchKey;
  document.addEventListener('pointerdown', event => {
    if (!event.target.closest?.('.search')) openResults(false);
  });
}
