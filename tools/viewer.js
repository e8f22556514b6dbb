// Draws the mesh of viewerMesh.js and turns it.
"use strict";

// --- Drawing ----------------------------------------------------------------------------------------------

const SURFACE_VERTEX = `#version 300 es
in vec3 position; in vec3 normal; in vec3 color;
uniform mat3 turn; uniform vec4 view;
out vec3 place; out vec3 facing; out vec3 paint;
void main() {
  place = turn * position; facing = turn * normal; paint = color;
  gl_Position = vec4(place.xy * view.xy + view.zw, -0.5 * place.z, 1.0);
}`;
const SURFACE_FRAGMENT = `#version 300 es
precision highp float;
in vec3 place; in vec3 facing; in vec3 paint;
uniform bool painted; uniform bool smoothed;
out vec4 result;
void main() {
  vec3 flatNormal = normalize(cross(dFdx(place), dFdy(place)));
  vec3 n = smoothed && length(facing) > 0.0 ? normalize(facing) * (gl_FrontFacing ? 1.0 : -1.0) : flatNormal;
  vec3 base = painted ? paint : gl_FrontFacing ? vec3(0.60, 0.71, 0.82) : vec3(0.90, 0.56, 0.30);
  vec3 key = normalize(vec3(-0.45, 0.65, 0.70));
  float light = 0.34 + 0.68 * max(0.0, dot(n, key)) + 0.20 * max(0.0, dot(n, normalize(vec3(0.80, 0.05, 0.45))));
  float gloss = 0.16 * pow(max(0.0, dot(n, normalize(key + vec3(0.0, 0.0, 1.0)))), 32.0);
  result = vec4(light * base + gloss, 1.0);
}`;
const LINE_VERTEX = `#version 300 es
in vec3 position;
uniform mat3 turn; uniform vec4 view; uniform float lift;
void main() {
  vec3 place = turn * position;
  gl_Position = vec4(place.xy * view.xy + view.zw, -0.5 * place.z - lift, 1.0);
}`;
const LINE_FRAGMENT = `#version 300 es
precision mediump float;
uniform vec4 color;
out vec4 result;
void main() { result = color; }`;

const canvas = element("canvas");
const gl = canvas.getContext("webgl2", { antialias: true, alpha: false });
if (!gl) {
  element("about").lastChild.textContent = "This browser offers no WebGL 2, which the picture needs.";
  throw new Error("no WebGL 2");
}

function makeProgram(vertexText, fragmentText) {
  const program = gl.createProgram();
  for (const [type, text] of [[gl.VERTEX_SHADER, vertexText], [gl.FRAGMENT_SHADER, fragmentText]]) {
    const shader = gl.createShader(type);
    gl.shaderSource(shader, text);
    gl.compileShader(shader);
    gl.attachShader(program, shader);
  }
  // The positions are the same buffer for both programs.
  gl.bindAttribLocation(program, 0, "position");
  gl.linkProgram(program);
  if (!gl.getProgramParameter(program, gl.LINK_STATUS))
    throw new Error(gl.getProgramInfoLog(program));
  return program;
}

function addAttribute(location, data, type, normalised) {
  if (location < 0)
    return;
  gl.bindBuffer(gl.ARRAY_BUFFER, gl.createBuffer());
  gl.bufferData(gl.ARRAY_BUFFER, data, gl.STATIC_DRAW);
  gl.enableVertexAttribArray(location);
  gl.vertexAttribPointer(location, 3, type, normalised, 0, 0);
}

function makeIndices(data) {
  const indices = { buffer: gl.createBuffer(), num: data.length };
  gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, indices.buffer);
  gl.bufferData(gl.ELEMENT_ARRAY_BUFFER, data, gl.STATIC_DRAW);
  return indices;
}

const surface = makeProgram(SURFACE_VERTEX, SURFACE_FRAGMENT);
const line = makeProgram(LINE_VERTEX, LINE_FRAGMENT);
addAttribute(0, shaded.positions, gl.FLOAT, false);
addAttribute(gl.getAttribLocation(surface, "normal"), shaded.normals, gl.FLOAT, false);
if (colors)
  addAttribute(gl.getAttribLocation(surface, "color"), shaded.colors, gl.UNSIGNED_BYTE, true);
const triangleIndices = makeIndices(shaded.corners);
const borderIndices = makeIndices(borders);
const nonManifoldIndices = makeIndices(nonManifold);
let wireIndices = null; // made when it is first asked for

const state = { wire: header.wire == 1, borders: header.marks == 1, paint: colors != null, smooth: true,
  dark: matchMedia("(prefers-color-scheme: dark)").matches };
let turn, zoom, shift; // rows to the right, up, and to the viewer; shift in pixels

const cross = (a, b) => [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]];
const dot = (a, b) => a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
const list = (v) => [v.x, v.y, v.z];

function reset() {
  const right = list(header.right), up = list(header.up);
  turn = [right, up, cross(right, up)];
  zoom = 1;
  shift = [0, 0];
}
reset();

// What the first view shows, to fit it into any window.
const firstExtent = [0, 1].map((row) => {
  let low = Infinity, high = -Infinity;
  for (let i = 0; i < positions.length; i += 3) {
    const x = dot(turn[row], [positions[i], positions[i + 1], positions[i + 2]]);
    low = Math.min(low, x);
    high = Math.max(high, x);
  }
  return { size: Math.max(high - low, 1e-6), middle: 0.5 * (low + high) };
});

// Pixels of the screen for each unit of the frame.
function pixelsPerUnit() {
  return 0.84 * zoom * Math.min(canvas.width / firstExtent[0].size, canvas.height / firstExtent[1].size);
}

function setView(program, view, offset) {
  gl.useProgram(program);
  const t = turn;
  gl.uniformMatrix3fv(gl.getUniformLocation(program, "turn"), false,
    [t[0][0], t[1][0], t[2][0], t[0][1], t[1][1], t[2][1], t[0][2], t[1][2], t[2][2]]);
  gl.uniform4f(gl.getUniformLocation(program, "view"), view[0], view[1],
    view[2] + 2 * offset[0] / canvas.width, view[3] + 2 * offset[1] / canvas.height);
}

function drawLines(indices, view, color, offsets) {
  for (const offset of offsets) {
    setView(line, view, offset);
    gl.uniform1f(gl.getUniformLocation(line, "lift"), 4e-4);
    gl.uniform4fv(gl.getUniformLocation(line, "color"), color);
    gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, indices.buffer);
    gl.drawElements(gl.LINES, indices.num, gl.UNSIGNED_INT, 0);
  }
}

function drawSurface(view) {
  setView(surface, view, [0, 0]);
  gl.uniform1i(gl.getUniformLocation(surface, "painted"), state.paint ? 1 : 0);
  gl.uniform1i(gl.getUniformLocation(surface, "smoothed"), state.smooth ? 1 : 0);
  gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, triangleIndices.buffer);
  gl.drawElements(gl.TRIANGLES, triangleIndices.num, gl.UNSIGNED_INT, 0);
}

function draw() {
  const ratio = window.devicePixelRatio || 1;
  canvas.width = Math.max(1, Math.round(canvas.clientWidth * ratio));
  canvas.height = Math.max(1, Math.round(canvas.clientHeight * ratio));
  gl.viewport(0, 0, canvas.width, canvas.height);
  gl.clearColor(...(state.dark ? [0.106, 0.122, 0.145] : [0.914, 0.929, 0.945]), 1);
  gl.clear(gl.COLOR_BUFFER_BIT | gl.DEPTH_BUFFER_BIT);
  gl.enable(gl.DEPTH_TEST);
  const unit = pixelsPerUnit();
  const view = [2 * unit / canvas.width, 2 * unit / canvas.height,
    2 * (shift[0] * ratio - unit * firstExtent[0].middle) / canvas.width,
    2 * (-shift[1] * ratio - unit * firstExtent[1].middle) / canvas.height];
  drawSurface(view);
  if (state.wire) {
    wireIndices ||= makeIndices(edgesOf(corners));
    gl.enable(gl.BLEND);
    gl.blendFunc(gl.SRC_ALPHA, gl.ONE_MINUS_SRC_ALPHA);
    drawLines(wireIndices, view, [0.05, 0.07, 0.1, 0.4], [[0, 0]]);
    gl.disable(gl.BLEND);
  }
  if (state.borders) {
    const thick = [[0, 0], [ratio, 0], [-ratio, 0], [0, ratio], [0, -ratio]];
    drawLines(borderIndices, view, [0.86, 0.10, 0.16, 1], thick);
    drawLines(nonManifoldIndices, view, [0.75, 0.15, 0.90, 1], thick);
  }
  showBar(unit / ratio / header.size);
}

let bWaiting = false;
function redraw() {
  if (bWaiting)
    return;
  bWaiting = true;
  requestAnimationFrame(() => { bWaiting = false; draw(); });
}

// --- What stands around it ----------------------------------------------------------------------------------

// The longest of 1, 2, 5 times a power of ten that 160 pixels hold.
function showBar(pixelsPerLength) {
  const limit = 160 / pixelsPerLength;
  const power = Math.floor(Math.log10(limit));
  const digit = [5, 2, 1].find((x) => x * 10 ** power <= limit) || 1;
  const length = Number(digit + "e" + power);
  element("bar").hidden = !isFinite(limit) || !(length > 0);
  element("bar").firstChild.textContent = String(length);
  element("bar").lastChild.style.width = length * pixelsPerLength + "px";
}

function showLegend() {
  element("legend").hidden = !header.legend || !state.paint;
  if (!header.legend)
    return;
  const texts = element("legend").firstChild.children;
  texts[0].textContent = String(Number(header.legend.low.toPrecision(3)));
  texts[1].textContent = header.legend.name;
  texts[2].textContent = String(Number(header.legend.high.toPrecision(3)));
  element("legend").lastChild.style.background = header.legend.signed
    ? "linear-gradient(90deg, #2152c2, #e0e0db, #cc2b1f)"
    : "linear-gradient(90deg, #2b4fbf, #26a6bf, #59bf4d, #f2cc33, #d1261f)";
}

function addButton(text, key, name) {
  const button = document.createElement("button");
  button.textContent = text + " (" + key + ")";
  const press = () => {
    if (name)
      state[name] = !state[name];
    else
      reset();
    showState();
  };
  button.addEventListener("click", press);
  addEventListener("keydown", (event) => {
    if (event.key.toLowerCase() == key && !event.ctrlKey && !event.metaKey && !event.altKey)
      press();
  });
  element("buttons").append(button);
  return () => name && button.setAttribute("aria-pressed", state[name]);
}

const updates = [addButton("Wires", "w", "wire")];
if (borders.length + nonManifold.length > 0)
  updates.push(addButton("Borders", "b", "borders"));
if (colors)
  updates.push(addButton("Colors", "c", "paint"));
updates.push(addButton("Smooth", "s", "smooth"), addButton("Dark", "d", "dark"), addButton("Reset", "r", null));

function showState() {
  updates.forEach((update) => update());
  document.documentElement.classList.toggle("dark", state.dark);
  showLegend();
  redraw();
}

// --- Mouse and fingers --------------------------------------------------------------------------------------

function rotationAbout(axis, angle) {
  const c = Math.cos(angle), s = Math.sin(angle), [x, y, z] = axis;
  return [[c + x * x * (1 - c), x * y * (1 - c) - z * s, x * z * (1 - c) + y * s],
    [x * y * (1 - c) + z * s, c + y * y * (1 - c), y * z * (1 - c) - x * s],
    [x * z * (1 - c) - y * s, y * z * (1 - c) + x * s, c + z * z * (1 - c)]];
}
const product = (a, b) => a.map((row) => [0, 1, 2].map((k) => row[0] * b[0][k] + row[1] * b[1][k] + row[2] * b[2][k]));

// About what points up, and over the edge of the screen.
function rotate(dx, dy) {
  turn = product(product(rotationAbout([1, 0, 0], 0.008 * dy), turn), rotationAbout(list(header.axis), 0.008 * dx));
  // Products round; rows stay at right angles.
  const length = (v) => Math.hypot(...v);
  const right = turn[0].map((x) => x / length(turn[0]));
  const towards = cross(right, turn[1]).map((x) => x / length(cross(right, turn[1])));
  turn = [right, cross(towards, right), towards];
}

// What lies under a place of the window, from its middle, stays there.
function zoomAt(factor, x, y) {
  const before = zoom;
  zoom = Math.min(1e4, Math.max(0.05, zoom * factor));
  const middle = [-1, 1].map((sign, k) => sign * pixelsPerUnit() / (window.devicePixelRatio || 1) / zoom * firstExtent[k].middle);
  [x, y].forEach((at, k) => {
    const origin = shift[k] + middle[k] * before;
    shift[k] = at - (at - origin) * zoom / before - middle[k] * zoom;
  });
}
const fromMiddle = (x, y) => [x - canvas.clientWidth / 2, y - canvas.clientHeight / 2];

const fingers = new Map();
canvas.addEventListener("pointerdown", (event) => {
  canvas.setPointerCapture(event.pointerId);
  fingers.set(event.pointerId, [event.clientX, event.clientY]);
});
for (const type of ["pointerup", "pointercancel"])
  canvas.addEventListener(type, (event) => fingers.delete(event.pointerId));
canvas.addEventListener("pointermove", (event) => {
  const before = fingers.get(event.pointerId);
  if (!before)
    return;
  const now = [event.clientX, event.clientY];
  const step = [now[0] - before[0], now[1] - before[1]];
  fingers.set(event.pointerId, now);
  if (fingers.size > 1) {
    const other = [...fingers].find(([id]) => id != event.pointerId)[1];
    const distance = (p) => Math.max(1, Math.hypot(p[0] - other[0], p[1] - other[1]));
    zoomAt(distance(now) / distance(before), ...fromMiddle((now[0] + other[0]) / 2, (now[1] + other[1]) / 2));
    shift = [shift[0] + step[0] / 2, shift[1] + step[1] / 2];
  } else if (event.shiftKey || (event.buttons & 6) != 0)
    shift = [shift[0] + step[0], shift[1] + step[1]];
  else
    rotate(...step);
  redraw();
});
canvas.addEventListener("wheel", (event) => {
  event.preventDefault();
  zoomAt(Math.exp(-0.0015 * event.deltaY * (event.deltaMode == 1 ? 30 : 1)), ...fromMiddle(event.clientX, event.clientY));
  redraw();
}, { passive: false });
canvas.addEventListener("dblclick", () => { reset(); redraw(); });
canvas.addEventListener("contextmenu", (event) => event.preventDefault());
addEventListener("resize", redraw);

element("about").firstChild.textContent = header.title;
element("about").lastChild.textContent = header.vertices + " vertices, " + header.triangles + " triangles" +
  (header.borderEdges ? ", " + header.borderEdges + " border edges" : "") +
  (header.nonManifoldEdges ? ", " + header.nonManifoldEdges + " non-manifold edges" : "");
showState();
