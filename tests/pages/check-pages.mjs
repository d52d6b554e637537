// check-pages.mjs REPORTS PROFILE: opens the pages of the finished site in the folder REPORTS from
// file:// in Chromium, whose profile goes into PROFILE, and tells every fault it finds.
import { existsSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { dirname, join, relative, resolve } from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';
import puppeteer from 'puppeteer-core';
import { checkAttacks } from './check-attacks.mjs';
import { checkChart } from './check-charts.mjs';

const [site, profile] = process.argv.slice(2).map((path) => resolve(path));
const axe = readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');
const rules = ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'];
const widths = [375, 1024, 1600];

const faults = [];
const done = {};
const count = (what, by = 1) => { done[what] = (done[what] ?? 0) + by; };
const expect = (holds, where, fault) => {
  count('expectations');
  if (!holds) faults.push(`${where}: ${fault}`);
};

const text = (name) => readFileSync(join(site, name), 'utf8');
const names = readdirSync(site, { recursive: true }).map(String);
const pageNames = names.filter((name) => name.endsWith('.HTM'));

// Chart pages of a device, by kind.
function chartPages(folder) {
  const found = { state: [], count: [] };
  for (const name of pageNames.filter((each) => dirname(each) === folder)) {
    const kind = /data-chart="(\w+)"/.exec(text(name))?.[1];
    if (kind) found[kind].push(name);
  }
  return found;
}

// ---- Every page of the tree, as text: links and images lead somewhere, no placeholder is left

const ids = new Map();
const idsOf = (name) => {
  if (!ids.has(name)) ids.set(name, new Set([...text(name).matchAll(/ id="([^"]+)"/g)].map((match) => match[1])));
  return ids.get(name);
};
for (const name of pageNames) {
  const source = text(name);
  count('pages read');
  expect(/^R(EPORTS|hostile)/.test(name) || !/%%[\w.]+%%/.test(source), name, `placeholder ${/%%[\w.]+%%/.exec(source)?.[0]} was not replaced`);
  for (const [, target] of source.matchAll(/<(?:a|img|link|script)\b[^>]*?\s(?:href|src)="([^"]*)"/g)) {
    count('links followed');
    const [path, fragment] = target.split('#');
    const file = path ? join(dirname(name), decodeURIComponent(path)) : name;
    expect(!/^[a-z]+:/i.test(path) && existsSync(join(site, file)), name, `"${target}" leads nowhere`);
    if (fragment && file.endsWith('.HTM')) expect(idsOf(file).has(fragment), name, `"${target}" names no place`);
  }
}

// ---- One page of each kind, in the browser

const all = (device) => chartPages(join('Rall', device));
const long = chartPages(join('Rlong', 'M1'));
const kinds = {
  'list of reports': 'REPORTS.HTM',
  'title page': 'Rall/TOP.HTM',
  'report page': 'Rall/REPORT.HTM',
  'report page without failures': 'Rfine/REPORT.HTM',
  'report page without data': 'Rsilent/REPORT.HTM',
  'summary': 'Rall/SUMMARY.HTM',
  'device list': 'Rall/DEVLIST.HTM',
  'device page': 'Rall/M1/DEVREP.HTM',
  'device page with markup': 'Rall/M2/DEVREP.HTM',
  'device page without data': 'Rall/M3/DEVREP.HTM',
  'state chart': all('M1').state[0],
  'counter chart': all('M1').count[0],
  'state chart with markup': all('M2').state[0],
  'counter chart with markup': all('M2').count[0],
  'state chart without data': all('M3').state[0],
  'counter chart without data': all('M3').count[0],
  'long state chart': long.state[0],
  'long counter chart': long.count[0],
};

const browser = await puppeteer.launch({
  executablePath: '/usr/bin/chromium',
  headless: true,
  userDataDir: profile,
  args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
    '--disable-component-update', '--disable-sync'],
});
const address = (name) => pathToFileURL(join(site, name)).href;

// A tab whose console, errors, requests and layout shifts are watched.
async function openTab(where) {
  const tab = await browser.newPage();
  tab.on('console', (message) => faults.push(`${where}: console says "${message.text()}"`));
  tab.on('pageerror', (error) => faults.push(`${where}: error "${error.message}"`));
  tab.on('requestfailed', (request) => faults.push(`${where}: cannot load ${request.url()}`));
  tab.on('request', (request) => {
    count('requests');
    if (!request.url().startsWith('file:')) faults.push(`${where}: asks for ${request.url()}`);
  });
  await tab.evaluateOnNewDocument(() => {
    window.shifted = 0;
    new PerformanceObserver((list) => {
      for (const entry of list.getEntries()) window.shifted += entry.value;
    }).observe({ type: 'layout-shift', buffered: true });
  });
  return tab;
}
const settle = (tab) => tab.evaluate(() => new Promise((go) => requestAnimationFrame(() => requestAnimationFrame(go))));

// In the dark only colours differ.
async function checkAccess(tab, where, scheme) {
  await tab.evaluate(axe);
  const runOnly = scheme === 'dark' ? ['color-contrast'] : rules;
  const found = await tab.evaluate((only) => axe.run({ runOnly: only, preload: false }), runOnly);
  count('accessibility rules passed', found.passes.length);
  expect(found.passes.length >= (scheme === 'dark' ? 1 : 12), where, 'the accessibility rules did not run');
  for (const { id, nodes } of found.violations)
    faults.push(`${where}: accessibility rule ${id} at ${nodes.map((node) => node.target.join(' ')).slice(0, 3).join(', ')}`);
}

async function checkPage(kind, name) {
  const tab = await openTab(kind);
  await tab.setViewport({ width: 1366, height: 850 });
  await tab.goto(address(name));
  await settle(tab);
  count('pages opened');
  const grounds = { light: 'rgb(243, 245, 247)', dark: 'rgb(18, 22, 27)' };
  for (const [scheme, expected] of Object.entries(grounds)) {
    await tab.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: scheme }]);
    await checkAccess(tab, `${kind}, ${scheme}`, scheme);
    const ground = await tab.evaluate(() => getComputedStyle(document.body).backgroundColor);
    expect(ground === expected, `${kind}, ${scheme}`, `the ground is ${ground}`);
  }

  const seen = await tab.evaluate(() => {
    for (const element of document.querySelectorAll('b')) element.dispatchEvent(new MouseEvent('mouseover', { bubbles: true }));
    return {
      owned: window.owned,
      shifted: window.shifted,
      links: [...document.links].map((link) => link.href),
      images: [...document.images].map(({ src, naturalWidth, attributes }) => ({
        src, loaded: naturalWidth > 0, sized: Boolean(attributes.width?.value && attributes.height?.value), alt: attributes.alt?.value })),
    };
  });
  expect(seen.owned === undefined, kind, 'injected script ran');
  expect(seen.shifted < .001, kind, `the page jumps while it loads (${seen.shifted})`);
  for (const link of seen.links) expect(existsSync(fileURLToPath(link.split('#')[0])), kind, `${link} leads nowhere`);
  for (const image of seen.images) {
    expect(image.loaded, kind, `${image.src} does not load`);
    expect(image.sized && image.alt, kind, `${image.src} lacks its size or its alternative text`);
  }
  for (const width of widths) {
    await tab.setViewport({ width, height: 800 });
    await settle(tab);
    const over = await tab.evaluate(() => document.documentElement.scrollWidth - innerWidth);
    expect(over <= 0, `${kind}, ${width} pixels wide`, `${over} pixels hang over`);
  }
  await tab.close();
}

async function checkLists() {
  const tab = await openTab('lists');
  await tab.setViewport({ width: 1366, height: 850 });
  await tab.goto(address('REPORTS.HTM'));
  const entries = await tab.$$eval('#reports > li', (list) => list.map((entry) => ({
    text: entry.innerText, links: entry.querySelectorAll('a[href]').length })));
  const never = entries.find((entry) => entry.text.includes('Never run'));
  expect(entries.length === 11 && never?.links === 0, 'list of reports', 'a report that never ran has links');
  const ran = entries.find((entry) => entry.text.includes('All devices'));
  expect(ran?.links === 3 && /2 of 4 devices with failures/.test(ran.text), 'list of reports', `a report that ran shows "${ran?.text}"`);
  await tab.type('.find input', 'all DEV');
  const found = await tab.$eval('.find output', (output) => output.textContent);
  const shown = await tab.$$eval('#reports > li', (list) => list.filter((entry) => entry.checkVisibility()).map((entry) => entry.innerText));
  expect(found === '1 of 11' && shown.length === 1 && shown[0].includes('All devices'), 'search box', `finds "${found}": ${shown}`);
  await Promise.all([tab.waitForNavigation(), tab.keyboard.press('Enter')]);
  expect(tab.url().endsWith('Rall/REPORT.HTM'), 'search box', `Enter leads to ${tab.url()}`);

  await tab.goto(address('Rsilent/REPORT.HTM'));
  const boxes = await tab.$$eval('.chart img', (list) => list.map((image) => image.clientHeight));
  const words = await tab.$eval('.worst', (section) => section.innerText);
  expect(boxes[0] > 300 && boxes[1] === 1 && !words.includes('No test failed'), 'report without data', `shows ${boxes}, "${words}"`);

  await tab.goto(address('Rall/SUMMARY.HTM'));
  const table = () => tab.$$eval('tbody tr', (rows) => rows.map((row) => [...row.cells].map((cell) => cell.textContent)));
  const rates = (await table()).slice(0, -1).map((row) => Number.parseFloat(row[4]));
  expect(rates.length === 4 && rates[0] <= rates[1] && rates[1] < rates[2] && Number.isNaN(rates[3]), 'summary', `is in the order ${rates}`);
  await tab.click('thead th:first-child button');
  const byName = (await table()).map((row) => row[0]);
  expect(byName.at(-1) === 'Total' && byName[0].startsWith('<script>window.owned=1</script><b onmouse') && byName.indexOf('Quiet device') < byName.indexOf('Router'),
    'summary', `is by name in the order ${byName}`);
  await tab.evaluate(() => [...document.querySelectorAll('tbody a')].find((link) => link.textContent === 'Router').click());
  const step = await tab.waitForSelector('.steps a[rel]', { timeout: 10_000 }).catch(() => null);
  expect(step && tab.url().endsWith('Rall/M1/DEVREP.HTM'), 'summary', `leads to ${tab.url()}, neighbours: ${Boolean(step)}`);
  await tab.close();
}

async function checkPaperAndNoScript(name) {
  const tab = await openTab('paper');
  await tab.goto(address(name));
  const visible = () => tab.evaluate(() => ['.plot', '.still img'].map((part) => document.querySelector(part).checkVisibility()));
  expect(String(await visible()) === 'true,false', 'chart on screen', `drawing and still image are visible: ${await visible()}`);
  await tab.emulateMediaType('print');
  expect(String(await visible()) === 'false,true', 'chart on paper', `drawing and still image are visible: ${await visible()}`);
  expect((await tab.pdf({ format: 'A4' })).length > 10_000, 'chart on paper', 'does not print');
  await tab.emulateMediaType('screen');
  await tab.setJavaScriptEnabled(false);
  await tab.reload();
  expect(String(await visible()) === 'false,true', 'chart without script', `drawing and still image are visible: ${await visible()}`);
  await tab.close();
}

// A counter's chart page with other values in place of its own.
const awkward = {
  'one value': { labels: 'Nov 20 - 08:00', series1: '5', series2: '5', series3: '5', unit: 'ms', value: 'Mean 5 ms' },
  'all equal': { labels: 'a,b,c', series1: '7,7,7', series2: '7,7,7', series3: '7,7,7', unit: '%', value: 'Mean 7 %' },
  'all zero': { labels: 'a,b', series1: '0,0', series2: '0,0', series3: '0,0', unit: '', value: 'Mean 0' },
  'negative values': { labels: 'a,b,c', series1: '-3,-2.5,-9', series2: '-4,-3,-10', series3: '-1,-1,-2', unit: '\u00b0C', value: 'Mean -3 \u00b0C' },
  'small values': { labels: 'a,b', series1: '0.00012,0.0003', series2: '0.0001,0.0002', series3: '0.0004,0.0005', unit: 'V', value: 'Mean 120 \u00b5V' },
  'large values': { labels: 'a,b', series1: '3221225472,1', series2: '1,1', series3: '9999999999,1', unit: 'B/s', value: 'Mean 3 GiB/s' },
  'large counts': { labels: 'a,b', series1: '1234567,1', series2: '1,1', series3: '9999999,1', unit: '#', value: 'Mean 1.235 M #' },
  'gaps around a value': { labels: 'a,b,c', series1: ' ,5, ', series2: ' ,4, ', series3: ' ,6, ', unit: 'ms', value: 'no data' },
};

async function checkAwkward() {
  const name = join(dirname(kinds['counter chart']), 'AWKWARD.HTM');
  for (const [what, { value, ...lists }] of Object.entries(awkward)) {
    const where = `chart of ${what}`;
    let page = text(kinds['counter chart']);
    for (const [id, list] of Object.entries(lists)) page = page.replace(new RegExp(`(id="${id}">)[^<]*`), `$1${list}`);
    writeFileSync(join(site, name), page);
    const tab = await openTab(where);
    await tab.goto(address(name));
    await tab.focus('.view');
    await tab.keyboard.press('ArrowRight');
    await settle(tab);
    const seen = await tab.evaluate(() => ({
      broken: /NaN|Infinity|undefined/.test(document.querySelector('.plot').innerHTML),
      drawn: document.querySelector('.view path.mean').getAttribute('d'),
      words: document.querySelector('.readout').textContent,
      outside: [...document.querySelectorAll('.axis text')].filter((text) => text.getBBox().x < 0).length,
    }));
    expect(!seen.broken && seen.drawn && !seen.outside, where, `draws ${JSON.stringify(seen)}`);
    expect(seen.words.startsWith(lists.labels.split(',')[0]) && seen.words.includes(value), where, `reads "${seen.words}"`);
    count('awkward charts');
    await tab.close();
  }
  rmSync(join(site, name));
}

try {
  for (const [kind, name] of Object.entries(kinds)) {
    if (name) await checkPage(kind, name);
    else faults.push(`there is no ${kind}`);
  }
  await checkLists();
  await checkAwkward();
  await checkPaperAndNoScript(kinds['state chart']);
  await checkAttacks(browser, site, expect, count);
  for (const kind of ['state chart', 'counter chart', 'long state chart', 'long counter chart']) {
    const tab = await openTab(kind);
    await checkChart(tab, address(kinds[kind]), (holds, fault) => expect(holds, kind, fault));
    count('charts worked');
    await tab.close();
  }
} finally {
  await browser.close();
}

for (const [what, number] of Object.entries(done)) console.log(`${String(number).padStart(6)} ${what}`);
for (const fault of faults) console.log(`FAULT ${fault.replaceAll(relative('/', site), '')}`);
console.log(faults.length ? `${faults.length} faults` : 'No fault found');
process.exitCode = faults.length ? 1 : 0;
