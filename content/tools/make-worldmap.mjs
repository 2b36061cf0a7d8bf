#!/usr/bin/env node
// Draws the world's land as a flat SVG for the info card's map: the equirectangular projection, longitude
// -180..180 to x 0..3600 and latitude 90..-90 to y 0..1800 (ten units a degree), light land on a sea colour
// with thin borders between the countries.
//
// The land and the borders come from Natural Earth (public domain) through the npm package world-atlas; its
// TopoJSON is turned into rings and lines with topojson-client. Neither is a dependency of the repository:
// install them into a temporary folder and point the script at it.
//
//   tmp=$(mktemp -d)
//   npm install --prefix "$tmp" world-atlas topojson-client
//   node content/tools/make-worldmap.mjs "$tmp/node_modules" app/resources/images/worldmap.svg [50m|110m]
//
// Outlines are thinned (Douglas-Peucker: a point goes when the outline moves by less than TOLERANCE units
// without it) and coordinates are rounded to one decimal, which keeps the file small while staying within a
// couple of pixels at the card's closest zoom.
import { readFileSync, writeFileSync } from "node:fs";
import { createRequire } from "node:module";
import { join, resolve } from "node:path";

const SEA = "#a7d3ee";
const LAND = "#f7f0dc";
const COAST = "#8fb9d4";
const BORDER = "#cdbb94";
const WIDTH = 3600;
const HEIGHT = 1800;
const TOLERANCE = 0.35;

function usage() {
    console.error("usage: make-worldmap.mjs NODE_MODULES OUTPUT.svg [50m|110m]");
    process.exit(2);
}

const [modulesArg, outputArg, resolution = "50m"] = process.argv.slice(2);
if (!modulesArg || !outputArg || !["10m", "50m", "110m"].includes(resolution)) {
    usage();
}
const modules = resolve(modulesArg);
const require = createRequire(join(modules, "noop.js"));
const topojson = require("topojson-client");
const topology = JSON.parse(readFileSync(join(modules, "world-atlas", `land-${resolution}.json`), "utf8"));
const atlasVersion = JSON.parse(readFileSync(join(modules, "world-atlas", "package.json"), "utf8")).version;

const project = ([lon, lat]) => [((lon + 180) * WIDTH) / 360, ((90 - lat) * HEIGHT) / 180];

// Distance of p from the line a-b (from a when a and b coincide).
function offLine(p, a, b) {
    const dx = b[0] - a[0];
    const dy = b[1] - a[1];
    const len = Math.hypot(dx, dy);
    if (len === 0) {
        return Math.hypot(p[0] - a[0], p[1] - a[1]);
    }
    return Math.abs(dy * p[0] - dx * p[1] + b[0] * a[1] - b[1] * a[0]) / len;
}

// Douglas-Peucker on an open polyline; returns the kept points, both ends included.
function simplify(points, tolerance) {
    const keep = new Uint8Array(points.length);
    keep[0] = keep[points.length - 1] = 1;
    const stack = [[0, points.length - 1]];
    while (stack.length) {
        const [first, last] = stack.pop();
        let worst = -1;
        let worstIndex = -1;
        for (let i = first + 1; i < last; i++) {
            const d = offLine(points[i], points[first], points[last]);
            if (d > worst) {
                worst = d;
                worstIndex = i;
            }
        }
        if (worst > tolerance) {
            keep[worstIndex] = 1;
            stack.push([first, worstIndex], [worstIndex, last]);
        }
    }
    return points.filter((_, i) => keep[i]);
}

// Rounds to whole tenths, in integers so that the relative steps add up exactly; repeats are dropped.
function tenths(points) {
    const ints = [];
    for (const p of points) {
        const q = [Math.round(p[0] * 10), Math.round(p[1] * 10)];
        const prev = ints[ints.length - 1];
        if (!prev || prev[0] !== q[0] || prev[1] !== q[1]) {
            ints.push(q);
        }
    }
    return ints;
}

const num = (v) => (v / 10).toFixed(1).replace(/\.0$/, "").replace(/^(-?)0\./, "$1.");
// A minus sign separates numbers by itself.
const joinNumbers = (values) =>
    values.map(num).reduce((out, s) => (out === "" || s.startsWith("-") ? out + s : `${out} ${s}`), "");

// "M x y l dx dy ..." for points in tenths, closed with "z" when asked.
function pathData(ints, closed) {
    const steps = [];
    for (let i = 1; i < ints.length; i++) {
        steps.push(ints[i][0] - ints[i - 1][0], ints[i][1] - ints[i - 1][1]);
    }
    return "M" + joinNumbers(ints[0]) + "l" + joinNumbers(steps) + (closed ? "z" : "");
}

// A closed ring of projected points as path data, or "" when it thins away to nothing.
function ringPath(points) {
    if (points.length > 4) {
        // Split the closed ring at its farthest point so that both halves keep their shape.
        const start = points[0];
        const away = (p) => Math.hypot(p[0] - start[0], p[1] - start[1]);
        let far = 1;
        for (let i = 1; i < points.length; i++) {
            if (away(points[i]) > away(points[far])) {
                far = i;
            }
        }
        const a = simplify(points.slice(0, far + 1), TOLERANCE);
        const b = simplify(points.slice(far), TOLERANCE);
        points = a.concat(b.slice(1));
    }
    const ints = tenths(points);
    const [first, last] = [ints[0], ints[ints.length - 1]];
    if (ints.length > 1 && first[0] === last[0] && first[1] === last[1]) {
        ints.pop();
    }
    return ints.length < 3 ? "" : pathData(ints, true);
}

// An open line of projected points as path data, or "" when it shrinks to a point.
function linePath(points) {
    const ints = tenths(simplify(points, TOLERANCE));
    return ints.length < 2 ? "" : pathData(ints, false);
}

const land = topojson.feature(topology, topology.objects.land);
const polygons = [];
for (const feature of land.type === "FeatureCollection" ? land.features : [land]) {
    const g = feature.geometry;
    if (g.type === "Polygon") {
        polygons.push(g.coordinates);
    } else if (g.type === "MultiPolygon") {
        polygons.push(...g.coordinates);
    }
}

// The rings live on the sphere: some cross the antimeridian (Chukotka, Fiji) and Antarctica goes round the
// south pole. Each ring is unrolled so that its longitudes run on without a jump; one that goes round a pole
// is closed along that pole's edge of the map; and a ring that then reaches past ±180° is drawn again a
// world's width away so that its other end shows at the opposite edge.
function flatRings(ring) {
    const out = [];
    let shift = 0;
    for (let i = 0; i < ring.length; i++) {
        if (i > 0) {
            const step = ring[i][0] + shift - out[i - 1][0];
            if (step > 180) {
                shift -= 360;
            } else if (step < -180) {
                shift += 360;
            }
        }
        out.push([ring[i][0] + shift, ring[i][1]]);
    }
    if (shift !== 0) {
        const pole = out.reduce((sum, p) => sum + p[1], 0) < 0 ? -90 : 90;
        out.push([out[out.length - 1][0], pole], [out[0][0], pole]);
    }
    const lons = out.map((p) => p[0]);
    const west = Math.min(...lons);
    const east = Math.max(...lons);
    return [-360, 0, 360]
        .filter((d) => west + d < 180 && east + d > -180)
        .map((d) => out.map(([lon, lat]) => [lon + d, lat]));
}

let rings = 0;
const landPaths = [];
for (const polygon of polygons) {
    for (const ring of polygon) {
        for (const flat of flatRings(ring)) {
            const d = ringPath(flat.map(project));
            if (d) {
                landPaths.push(d);
                rings++;
            }
        }
    }
}

// Borders between countries, as lines broken wherever they would jump across the map.
const countries = JSON.parse(readFileSync(join(modules, "world-atlas", `countries-${resolution}.json`), "utf8"));
const borders = topojson.mesh(countries, countries.objects.countries, (a, b) => a !== b);
let borderPaths = [];
for (const line of borders.coordinates) {
    let run = [];
    for (let i = 0; i < line.length; i++) {
        if (i > 0 && Math.abs(line[i][0] - line[i - 1][0]) > 180) {
            borderPaths.push(linePath(run.map(project)));
            run = [];
        }
        run.push(line[i]);
    }
    borderPaths.push(linePath(run.map(project)));
}
borderPaths = borderPaths.filter((d) => d !== "");

const svg =
    `<?xml version="1.0" encoding="UTF-8"?>\n` +
    `<!-- The world's land, equirectangular, 10 units a degree. Natural Earth (public domain) via world-atlas ` +
    `${atlasVersion} land-${resolution} and countries-${resolution} (ISC); ` +
    `made by content/tools/make-worldmap.mjs. -->\n` +
    `<svg xmlns="http://www.w3.org/2000/svg" width="${WIDTH}" height="${HEIGHT}" viewBox="0 0 ${WIDTH} ${HEIGHT}">\n` +
    `<rect width="${WIDTH}" height="${HEIGHT}" fill="${SEA}"/>\n` +
    `<path fill="${LAND}" fill-rule="evenodd" stroke="${COAST}" stroke-width="1" ` +
    `vector-effect="non-scaling-stroke" stroke-linejoin="round" d="${landPaths.join("")}"/>\n` +
    `<path fill="none" stroke="${BORDER}" stroke-width="1" vector-effect="non-scaling-stroke" ` +
    `stroke-linejoin="round" d="${borderPaths.join("")}"/>\n` +
    `</svg>\n`;
writeFileSync(outputArg, svg);
const kib = (svg.length / 1024).toFixed(0);
console.log(`${outputArg}: ${rings} rings, ${borderPaths.length} border lines, ${kib} KiB`);
