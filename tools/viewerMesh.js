// The mesh of the page, as it is embedded and as it is shaded.
"use strict";
const element = (id) => document.getElementById(id);
const header = JSON.parse(element("header").textContent);

// Of the frame of the mesh: its middle is the origin, the longest edge of its box is 1.
function decode(id, Type) {
  const text = atob(element(id).textContent.trim());
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i)
    bytes[i] = text.charCodeAt(i);
  element(id).remove();
  return new Type(bytes.buffer);
}

function decodePositions() {
  if (!header.quantised)
    return decode("positions", Float32Array);
  const steps = decode("positions", Uint16Array);
  const positions = new Float32Array(steps.length);
  const low = [header.low.x, header.low.y, header.low.z];
  const extent = [header.extent.x, header.extent.y, header.extent.z];
  for (let i = 0; i < steps.length; ++i)
    positions[i] = low[i % 3] + extent[i % 3] * steps[i] / 65535;
  return positions;
}

// Of each triangle, as long as twice its area.
function areasOf(positions, corners) {
  const areas = new Float32Array(corners.length);
  for (let i = 0; i < corners.length; i += 3) {
    const a = 3 * corners[i], b = 3 * corners[i + 1], c = 3 * corners[i + 2];
    const ux = positions[b] - positions[a], uy = positions[b + 1] - positions[a + 1], uz = positions[b + 2] - positions[a + 2];
    const vx = positions[c] - positions[a], vy = positions[c + 1] - positions[a + 1], vz = positions[c + 2] - positions[a + 2];
    areas[i] = uy * vz - uz * vy;
    areas[i + 1] = uz * vx - ux * vz;
    areas[i + 2] = ux * vy - uy * vx;
  }
  return areas;
}

// The triangles around each vertex: those of v are triangles[begin[v]] up to triangles[begin[v + 1]].
function fansOf(numVertices, corners) {
  const begin = new Uint32Array(numVertices + 1);
  corners.forEach((corner) => ++begin[corner + 1]);
  for (let v = 0; v < numVertices; ++v)
    begin[v + 1] += begin[v];
  const next = begin.slice(), triangles = new Uint32Array(corners.length);
  corners.forEach((corner, i) => { triangles[next[corner]++] = (i - i % 3) / 3; });
  return { begin, triangles };
}

// What the surface is shaded by. A corner's normal is the mean of the triangles around that lean less than a crease
// against its own; where these are not all, the corner becomes a vertex of its own, so that sharp edges look sharp.
function shadedMesh(positions, corners, colors) {
  const COS_CREASE = Math.cos(0.56);
  const areas = areasOf(positions, corners), fans = fansOf(positions.length / 3, corners);
  const lengths = areas.filter((x, i) => i % 3 == 0).map((x, t) => Math.hypot(areas[3 * t], areas[3 * t + 1], areas[3 * t + 2]));
  const normals = new Float32Array(positions.length), shadedCorners = corners.slice();
  const extras = { sources: [], normals: [] };
  for (let i = 0; i < corners.length; ++i) {
    const v = corners[i], own = (i - i % 3) / 3, sum = [0, 0, 0];
    let all = true;
    for (let k = fans.begin[v]; k < fans.begin[v + 1]; ++k) {
      const t = fans.triangles[k];
      const cosine = areas[3 * t] * areas[3 * own] + areas[3 * t + 1] * areas[3 * own + 1] + areas[3 * t + 2] * areas[3 * own + 2];
      if (cosine >= COS_CREASE * lengths[t] * lengths[own])
        sum.forEach((x, n) => { sum[n] = x + areas[3 * t + n]; });
      else
        all = false;
    }
    const length = Math.hypot(...sum) || 1, normal = sum.map((x) => x / length);
    if (all)
      normals.set(normal, 3 * v);
    else {
      shadedCorners[i] = positions.length / 3 + extras.sources.length;
      extras.sources.push(v);
      extras.normals.push(...normal);
    }
  }
  const extended = (data, tail) => {
    const result = new data.constructor(data.length + 3 * extras.sources.length);
    result.set(data);
    tail(result, data.length);
    return result;
  };
  const copied = (data) => extended(data, (result, at) => extras.sources.forEach((v, n) =>
    result.set(data.subarray(3 * v, 3 * v + 3), at + 3 * n)));
  return { corners: shadedCorners, positions: copied(positions), colors: colors && copied(colors),
    normals: extended(normals, (result, at) => result.set(extras.normals, at)) };
}

// Each edge once where two triangles share it.
function edgesOf(corners) {
  const edges = new Uint32Array(2 * corners.length);
  let num = 0;
  for (let i = 0; i < corners.length; ++i) {
    const a = corners[i], b = corners[i % 3 == 2 ? i - 2 : i + 1];
    if (a < b || header.borderEdges > 0) {
      edges[num++] = a;
      edges[num++] = b;
    }
  }
  return edges.subarray(0, num);
}

const positions = decodePositions();
const corners = decode("corners", Uint32Array);
const colors = header.colors ? decode("colors", Uint8Array) : null;
const borders = decode("borders", Uint32Array);
const nonManifold = decode("nonManifold", Uint32Array);
const shaded = shadedMesh(positions, corners, colors);
