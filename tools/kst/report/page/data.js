'use strict';
// The run, as build_page.cpp writes it:
//   {maxSide, atlases: [atlas], sets: [set]}
//   atlas   {folder, name, category, autoload, image, areas: [textures, padding, total], textures: [texture], faults}
//   texture {name, rect: [x, y, w, h], padding: [u, v], rotation, tiled: [u, v], groups, original, filter, forced: [w, h]}
//   set     {folder, name, autoload, images: [{name, category, image, original, filter, forced, faults}], faults}
//   image   {file, bytes, size: [w, h]} and, if it could be read, {format, levels: [{size, picture}], thumbnail} and,
//           for a cube map, {faces: [{name, rect}]}
//   picture [number, width, height, has alpha]; its PNG bytes stand as base64 in the script elements "c" + number
//           (colour) and "a" + number (alpha)
// Nothing of it ever becomes markup: text goes into the page by textContent and attributes alone.

const run = JSON.parse(document.getElementById('run').textContent);
const byId = id => document.getElementById(id);

/** An element: `make('a.card', {href: '#/'}, child, 'text')`. Properties that are no DOM property become attributes. */
function make(what, properties = {}, ...children) {
  const [tag, ...classes] = what.split('.');
  const node = document.createElement(tag || 'div');
  if (classes.length) node.className = classes.join(' ');
  for (const [name, value] of Object.entries(properties))
    if (name in node && name !== 'style') node[name] = value;
    else node.setAttribute(name, value);
  node.append(...children.filter(child => child !== null));
  return node;
}

const decimals = (value, places) => value.toFixed(places).replace(/\B(?=(\d{3})+(?!\d))/g, '\u202f');

function bytesText(bytes) {
  for (const [unit, name] of [[1e9, 'GB'], [1e6, 'MB'], [1e3, 'KB']])
    if (bytes >= unit) return `${decimals(bytes / unit, bytes >= 100 * unit ? 0 : 1)} ${name}`;
  return `${bytes} bytes`;
}

const percentText = share => `${(share * 100).toFixed(share > 0.9995 || share === 0 ? 0 : 1)} %`;
const sizeText = ([width, height]) => `${width} \u00d7 ${height}`;
const countText = (count, one, many = `${one}s`) => `${decimals(count, 0)} ${count === 1 ? one : many}`;

/** Digits compare as numbers: atlas2 stands ahead of atlas10. */
const byName = new Intl.Collator('en', {numeric: true}).compare;

/** The folders and what a set is called by: the atlases of a split set are only told apart by their last part. */
function splitName(name) {
  const slash = name.replace(/\/atlas\d+$/, '').lastIndexOf('/');
  return [name.slice(0, slash + 1), name.slice(slash + 1)];
}

// ---- what the views show ----
// An item is a picture with rectangles: an atlas, or an image of a set. `route` is its address in the page.

function makeItem(route, up, record, name, extra) {
  return {route, up, name, image: record.image, faults: record.faults, category: record.category, used: null, ...extra};
}

const atlases = run.atlases.map((atlas, index) => {
  const [textures, padding, total] = atlas.areas;
  const item = makeItem(`#/a/${index}`, '#/', atlas, atlas.name || '(root)', {kind: 'atlas', areas: atlas.areas});
  item.rectangles = atlas.textures.map((texture, number) => ({...texture, number}));
  item.used = total && item.image.levels ? (textures + padding) / total : null;
  item.freeBytes = item.used === null ? 0 : item.image.bytes * (1 - item.used);
  item.bytes = item.image.bytes;
  item.count = item.rectangles.length;
  item.autoload = atlas.autoload;
  return item;
});

const sets = run.sets.map((set, index) => {
  const route = `#/s/${index}`;
  const images = set.images.map((image, number) =>
    makeItem(`${route}/${number}`, route, image, image.name, {
      kind: 'image', set: set.name, original: image.original, filter: image.filter, forced: image.forced, autoload: set.autoload,
      rectangles: (image.image.faces || []).map((face, at) => ({...face, number: at})),
    }));
  const faults = set.faults.concat(...images.map(image => image.faults));
  const bytes = images.reduce((sum, image) => sum + image.image.bytes, 0);
  return {kind: 'set', route, up: '#/', name: set.name || '(root)', images, faults, bytes, used: null, freeBytes: 0,
    count: images.length};
});
