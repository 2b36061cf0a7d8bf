#!/usr/bin/env node
// The symbol artwork of the level pictures: finds symbols by name, and copies every symbol that the scenes
// name into content/pictures/svg/ together with the index symbols.tsv that the content tool reads.
//
//   node content/tools/symbols.mjs find WORD [WORD ...]   symbols whose name holds every WORD
//   node content/tools/symbols.mjs import [--prune]       copy the symbols the scenes use (--prune: and
//                                                         delete the files no scene uses)
//
// A scene names a symbol as SET:NAME (noto:camel, fluent:red-apple, openmoji:mosque, gi:anvil,
// twemoji:house) or, for the first pictures of the game, as a bare Twemoji file stem (1f34e). The sets come
// from the npm registry at the versions below; they are installed into $TARVOLIN_SYMBOLS_DIR, or into
// ~/.cache/tarvolin-symbols, once.
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
const content = path.dirname(here);
const scenesDir = path.join(content, 'pictures', 'scenes');
const svgDir = path.join(content, 'pictures', 'svg');

// The prefix a scene writes, the package that holds the set, and whether its pictures are one-colour
// silhouettes that the scene tints.
const SETS = {
  fluent: { pkg: '@iconify-json/fluent-emoji', version: '1.2.7' },
  noto: { pkg: '@iconify-json/noto', version: '1.2.9' },
  openmoji: { pkg: '@iconify-json/openmoji', version: '1.2.29' },
  twemoji: { pkg: '@iconify-json/twemoji', version: '1.2.5' },
  gi: { pkg: '@iconify-json/game-icons', version: '1.2.4' },
};
const TWEMOJI_FILES = { pkg: '@twemoji/svg', version: '15.0.0' };

function die(message, status = 1) {
  console.error(`symbols.mjs: ${message}`);
  process.exit(status);
}

function packagesDir() {
  const dir = process.env.TARVOLIN_SYMBOLS_DIR || path.join(os.homedir(), '.cache', 'tarvolin-symbols');
  const wanted = [...Object.values(SETS), TWEMOJI_FILES];
  const missing = wanted.filter((p) => {
    const manifest = path.join(dir, 'node_modules', p.pkg, 'package.json');
    return !fs.existsSync(manifest) || JSON.parse(fs.readFileSync(manifest, 'utf8')).version !== p.version;
  });
  if (missing.length > 0) {
    fs.mkdirSync(dir, { recursive: true });
    console.error(`symbols.mjs: installing ${missing.map((p) => p.pkg).join(', ')} into ${dir}`);
    execFileSync('npm', ['install', '--prefix', dir, '--no-audit', '--no-fund', '--silent',
      ...missing.map((p) => `${p.pkg}@${p.version}`)], { stdio: ['ignore', 'inherit', 'inherit'] });
  }
  return path.join(dir, 'node_modules');
}

const loaded = new Map();
function loadSet(modules, prefix) {
  if (!loaded.has(prefix)) {
    const dir = path.join(modules, SETS[prefix].pkg);
    const icons = JSON.parse(fs.readFileSync(path.join(dir, 'icons.json'), 'utf8'));
    const charsFile = path.join(dir, 'chars.json');
    const chars = fs.existsSync(charsFile) ? JSON.parse(fs.readFileSync(charsFile, 'utf8')) : {};
    loaded.set(prefix, { icons, chars });
  }
  return loaded.get(prefix);
}

// The icon's SVG document, or null when the set has no such name. Aliases are followed, with their flips.
function iconSvg(set, name) {
  const { icons } = set;
  let current = name;
  let flip = false;
  let icon = icons.icons[current];
  for (let hops = 0; !icon && icons.aliases && icons.aliases[current] && hops < 8; ++hops) {
    flip = flip !== Boolean(icons.aliases[current].hFlip);
    current = icons.aliases[current].parent;
    icon = icons.icons[current];
  }
  if (!icon) return null;
  const left = icon.left ?? icons.left ?? 0;
  const top = icon.top ?? icons.top ?? 0;
  const width = icon.width ?? icons.width ?? 16;
  const height = icon.height ?? icons.height ?? 16;
  let body = icon.body;
  if (flip !== Boolean(icon.hFlip)) body = `<g transform="translate(${2 * left + width} 0) scale(-1 1)">${body}</g>`;
  return '<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" ' +
    `viewBox="${left} ${top} ${width} ${height}" width="${width}" height="${height}">${body}</svg>\n`;
}

// The emoji names by code points, from the sets that list them: "1f34e" -> "red-apple".
function emojiNames(modules) {
  const names = new Map();
  for (const prefix of ['noto', 'openmoji', 'twemoji']) {
    for (const [code, name] of Object.entries(loadSet(modules, prefix).chars)) {
      const stem = code.split('-').filter((c) => c !== 'fe0f').join('-');
      if (!names.has(stem)) names.set(stem, name);
    }
  }
  return names;
}

// What a symbol is, whatever set draws it: the emoji's name for every emoji set, SET:NAME for the others.
function keyOf(symbol, names) {
  const colon = symbol.indexOf(':');
  if (colon < 0) {
    const stem = symbol.split('-').filter((c) => c !== 'fe0f').join('-');
    return names.get(stem) ?? stem;
  }
  const prefix = symbol.slice(0, colon);
  return prefix === 'gi' ? symbol : symbol.slice(colon + 1);
}

// Every symbol that a scene line names: the fields after the picture name and the background, up to a
// comment, without the mirror mark, the tint and the placement.
function usedSymbols() {
  const used = new Set();
  const files = fs.existsSync(scenesDir)
    ? fs.readdirSync(scenesDir).filter((f) => f.endsWith('.txt')).map((f) => path.join(scenesDir, f))
    : [];
  if (files.length === 0) die(`no scene files in ${scenesDir}`);
  for (const file of files) {
    for (const line of fs.readFileSync(file, 'utf8').split('\n')) {
      const fields = line.trim().split(/\s+/);
      if (fields[0] === '' || fields[0].startsWith('#')) continue;
      for (const field of fields.slice(2)) {
        if (field.startsWith('#')) break;
        used.add(field.replace(/^~/, '').replace(/[@=].*$/, ''));
      }
    }
  }
  return [...used].sort();
}

function fileOf(symbol) {
  const colon = symbol.indexOf(':');
  return colon < 0 ? path.join(svgDir, `${symbol}.svg`)
    : path.join(svgDir, symbol.slice(0, colon), `${symbol.slice(colon + 1)}.svg`);
}

function importSymbols(prune) {
  const modules = packagesDir();
  const names = emojiNames(modules);
  const symbols = usedSymbols();
  const problems = [];
  const index = [];
  for (const symbol of symbols) {
    const colon = symbol.indexOf(':');
    let svg = null;
    if (colon < 0) {
      if (!/^[0-9a-f]+(-[0-9a-f]+)*$/.test(symbol)) { problems.push(`'${symbol}' is no symbol`); continue; }
      const source = path.join(modules, TWEMOJI_FILES.pkg, `${symbol}.svg`);
      if (fs.existsSync(source)) svg = fs.readFileSync(source, 'utf8');
    } else {
      const prefix = symbol.slice(0, colon);
      if (!SETS[prefix]) { problems.push(`'${symbol}': no set is called '${prefix}'`); continue; }
      svg = iconSvg(loadSet(modules, prefix), symbol.slice(colon + 1));
    }
    if (svg === null) { problems.push(`'${symbol}' does not exist`); continue; }
    fs.mkdirSync(path.dirname(fileOf(symbol)), { recursive: true });
    fs.writeFileSync(fileOf(symbol), svg);
    index.push(`${symbol}\t${keyOf(symbol, names)}`);
  }
  if (problems.length > 0) die(problems.join('\n'));
  fs.writeFileSync(path.join(svgDir, 'symbols.tsv'),
    '# symbol\twhat it shows: the emoji\'s name, whatever set draws it (written by symbols.mjs import)\n' +
    index.join('\n') + '\n');
  if (prune) {
    const keep = new Set(symbols.map(fileOf));
    const walk = (dir) => {
      for (const entry of fs.readdirSync(dir, { withFileTypes: true })) {
        const full = path.join(dir, entry.name);
        if (entry.isDirectory()) walk(full);
        else if (entry.name.endsWith('.svg') && !keep.has(full)) {
          fs.rmSync(full);
          console.error(`symbols.mjs: removed unused ${path.relative(svgDir, full)}`);
        }
      }
    };
    walk(svgDir);
  }
  console.error(`symbols.mjs: ${symbols.length} symbols in ${svgDir}`);
}

function find(words) {
  const modules = packagesDir();
  const wanted = words.map((w) => w.toLowerCase());
  for (const prefix of Object.keys(SETS)) {
    const { icons } = loadSet(modules, prefix);
    const all = [...Object.keys(icons.icons), ...Object.keys(icons.aliases ?? {})];
    const hits = all.filter((name) => wanted.every((w) => name.includes(w))).sort();
    if (hits.length > 0) console.log(`${prefix}: ${hits.map((h) => `${prefix}:${h}`).join(' ')}`);
  }
}

const [command, ...rest] = process.argv.slice(2);
if (command === 'find' && rest.length > 0) find(rest);
else if (command === 'import' && rest.every((a) => a === '--prune')) importSymbols(rest.includes('--prune'));
else die('usage: symbols.mjs find WORD [WORD ...] | symbols.mjs import [--prune]', 2);
