// Pictures are decoded when they are seen, and forgotten soon after.

/** The text of a data block. Blocks stand behind this script, so a large page may not have loaded it yet. */
async function block(id) {
  for (;;) {
    const node = byId(id);
    // The parser fills a block bit by bit: it is whole once something stands behind it.
    if (node && (node.nextSibling || document.readyState !== 'loading')) return node.textContent;
    if (!node && document.readyState !== 'loading') throw new Error(`no data ${id}`);
    await new Promise(resolve => setTimeout(resolve, 40));
  }
}

async function decodeChannel(id, width, height) {
  const image = new Image();
  image.src = `data:image/png;base64,${await block(id)}`;
  await image.decode();
  const canvas = new OffscreenCanvas(width, height);
  const context = canvas.getContext('2d', {willReadFrequently: true});
  context.drawImage(image, 0, 0);
  return context.getImageData(0, 0, width, height);
}

const recent = new Map();

/** Colour and alpha of a picture as pixels; alpha is null where all is opaque. */
function decodePicture([number, width, height, hasAlpha]) {
  if (!recent.has(number)) {
    recent.set(number, Promise.all([
      decodeChannel(`c${number}`, width, height), hasAlpha ? decodeChannel(`a${number}`, width, height) : null]));
    if (recent.size > 4) recent.delete(recent.keys().next().value);
  }
  return recent.get(number);
}

const channelViews = ['RGBA', 'RGB', 'R', 'G', 'B', 'A'];

/** New pixels for one of the channel views; single channels are shown as grey. */
function viewPixels([colour, alpha], view) {
  const pixels = new ImageData(new Uint8ClampedArray(colour.data), colour.width, colour.height);
  const data = pixels.data;
  if (view === 'RGBA' && alpha) {
    for (let i = 0; i < data.length; i += 4) data[i + 3] = alpha.data[i];
  } else if (view === 'A') {
    for (let i = 0; i < data.length; i += 4) data[i] = data[i + 1] = data[i + 2] = alpha ? alpha.data[i] : 255;
  } else if (view.length === 1) {
    const channel = 'RGB'.indexOf(view);
    for (let i = 0; i < data.length; i += 4) data[i] = data[i + 1] = data[i + 2] = data[i + channel];
  }
  return pixels;
}

function drawPixels(canvas, pixels) {
  canvas.width = pixels.width;
  canvas.height = pixels.height;
  canvas.getContext('2d').putImageData(pixels, 0, 0);
}

// Thumbnails: drawn as a card comes near, given back as it goes.
const thumbnails = new IntersectionObserver(entries => {
  for (const {target, isIntersecting} of entries) {
    target.seen = isIntersecting;
    if (isIntersecting) drawThumbnail(target).catch(error => console.error(error));
    else target.width = target.height = 0;
  }
}, {rootMargin: '400px'});

async function drawThumbnail(canvas) {
  const pixels = viewPixels(await decodePicture(canvas.picture), 'RGBA');
  if (canvas.seen) drawPixels(canvas, pixels);
}

function thumbnail(image) {
  if (!image.thumbnail) return make('div.none', {}, 'No picture');
  const canvas = make('canvas', {width: 0, height: 0});
  canvas.setAttribute('aria-hidden', 'true');
  canvas.picture = image.thumbnail;
  thumbnails.observe(canvas);
  return canvas;
}
