// Which view is shown, by the address behind the "#", and the keys.
//   #/                 the gallery            #/s/SET             a texture set
//   #/a/ATLAS[/t/N]    an atlas, texture N    #/s/SET/IMAGE[/t/N] an image of a set, face N

let opener = null;

function showView(id) {
  for (const name of ['gallery', 'set', 'viewer']) byId(name).hidden = name !== id;
  byId('tip').hidden = true;
  if (byId('help').open) byId('help').close();
}

function route() {
  const [kind, first, second, third, fourth] = location.hash.replace(/^#\/?/, '').split('/');
  const set = kind === 's' ? sets[Number(first)] : undefined;
  const isImage = set && second !== undefined;
  const item = kind === 'a' ? atlases[Number(first)] : isImage ? set.images[Number(second)] : undefined;
  const chosen = isImage ? [third, fourth] : [second, third];
  if (item) {
    showView('viewer');
    openItem(item, chosen[0] === 't' ? Number(chosen[1]) : undefined);
    opener = item;
    stage.focus({preventScroll: true});
  } else if (set) {
    showView('set');
    showSet(set);
    (opener?.kind === 'image' && set.images.includes(opener) ? opener.card : byId('set')).focus();
    opener = set;
  } else {
    showView('gallery');
    (opener?.card?.isConnected ? opener.card : byId('gallery')).focus();
    opener = null;
  }
}

/** Keys of the viewer that do not depend on what has the focus. */
const viewerKeys = {
  '+': () => setZoom(view.zoom * 1.5), '=': () => setZoom(view.zoom * 1.5), '-': () => setZoom(view.zoom / 1.5),
  0: fit, 1: () => setZoom(1), '[': () => setLevel(view.level - 1), ']': () => setLevel(view.level + 1),
  c: () => setChannels(channelViews[(channelViews.indexOf(view.channels) + 1) % channelViews.length]),
  b: () => setGround(view.ground + 1),
  o: () => toggleOverlay('outlines'), d: () => toggleOverlay('paddings'), f: () => toggleOverlay('frees'),
  p: () => step(-1), n: () => step(1),
};

const stageKeys = {ArrowLeft: [1, 0], ArrowRight: [-1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1]};

function listKey(key) {
  const rows = [...byId('textures').children];
  const at = rows.indexOf(view.rows[view.chosen]);
  const moves = {ArrowDown: at + 1, ArrowUp: at < 0 ? 0 : at - 1, Home: 0, End: rows.length - 1, Enter: at};
  if (!(key in moves)) return false;
  const row = rows[Math.min(Math.max(moves[key], 0), rows.length - 1)];
  if (row && (key !== 'Enter' || at >= 0)) choose(view.rows.indexOf(row), key === 'Enter');
  return true;
}

/** True when the key did something. */
function viewerKey(event) {
  if (event.key in viewerKeys) viewerKeys[event.key]();
  else if (event.key === 'Escape' && view.chosen >= 0) choose(-1, false);
  else if (event.key === 'Escape') location.hash = view.item.up;
  else if (event.key in stageKeys && event.target === stage) pan(...stageKeys[event.key].map(part => part * (event.shiftKey ? 240 : 60)));
  else return event.target === byId('textures') && listKey(event.key);
  return true;
}

function cardKey(event) {
  if (event.key === 'Escape' && !byId('set').hidden) {
    location.hash = '#/';
    return true;
  }
  if (!/^(Arrow|Home$|End$)/.test(event.key)) return false;
  const card = event.target.closest('.card');
  // From anywhere else an arrow leads into the cards, unless the page is to be scrolled.
  const next = card ? neighbourCard(card, event.key) : event.target.tagName === 'MAIN' ? document.querySelector('main:not([hidden]) .card') : null;
  next?.focus();
  return Boolean(next);
}

document.addEventListener('keydown', event => {
  if (event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented || byId('help').open) return;
  if (/^(INPUT|SELECT)$/.test(event.target.tagName)) return;
  let done = true;
  if (event.key === '/') {
    byId('search').focus();
    byId('search').select();
  } else if (event.key === '?') byId('help').showModal();
  else done = byId('viewer').hidden ? cardKey(event) : viewerKey(event);
  if (done) event.preventDefault();
});

byId('help-button').onclick = () => byId('help').showModal();
startGallery();
startViewer();
startSearch();
addEventListener('hashchange', route);
route();
