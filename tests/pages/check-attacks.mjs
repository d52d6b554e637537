// What hostile names and injected scripts can do to the pages, opened from file:// and over http.
import { createServer } from 'node:http';
import { existsSync, readFileSync, readdirSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';

const types = { HTM: 'text/html', css: 'text/css', js: 'text/javascript', PNG: 'image/png' };

function serve(site) {
  const server = createServer((request, answer) => {
    const file = join(site, decodeURIComponent(request.url.split(/[?#]/)[0]));
    answer.setHeader('Content-Type', types[file.split('.').at(-1)] ?? 'application/octet-stream');
    answer.statusCode = existsSync(file) ? 200 : 404;
    answer.end(answer.statusCode === 200 ? readFileSync(file) : '');
  });
  return new Promise((go) => server.listen(0, '127.0.0.1', () => go(server)));
}

// What a page is made of, once its script has run and a redirection would have begun.
async function lookAt(tab, address) {
  await tab.goto(address);
  await new Promise((go) => setTimeout(go, 200));
  return tab.evaluate(() => {
    const number = (selector, holds = () => true) => [...document.querySelectorAll(selector)].filter(holds).length;
    const comments = document.createTreeWalker(document, NodeFilter.SHOW_COMMENT);
    return {
      url: decodeURIComponent(location.href),
      owned: window.owned,
      works: number('.steps a, .view, table.sortable button') > 0 || number('.steps, .plot, table.sortable') === 0,
      metas: number('meta'),
      comments: comments.nextNode() ? 1 + Boolean(comments.nextNode()) : 0,
      foreign: number('base, object, iframe, form, title ~ title, body ~ *, [onfocus], [autofocus]'),
      scripts: number('script', (script) => !/vantrel(-chart)?\.js$/.test(script.src)),
      links: number('a[href]', (link) => !/^(file|http):/.test(link.href)),
      spread: number('main b main, main b section, main b table, main b li, main i section'),
    };
  });
}

const injected = `<p id="x" onclick="window.owned=1"></p><script>window.owned=2</script><script src="owned.csv"></script>
<script nonce="" src="owned.csv"></script><script nonce="0" src="owned.csv"></script><img src="none.png" onerror="window.owned=3">`;

export async function checkAttacks(browser, site, expect, count) {
  const server = await serve(site);
  try {
    await attack(browser, site, `http://127.0.0.1:${server.address().port}`, expect, count);
  } finally {
    server.close();
    server.closeAllConnections();
    for (const name of ['owned.csv', 'OWNED.HTM']) rmSync(join(site, name));
  }
}

async function attack(browser, site, served, expect, count) {
  writeFileSync(join(site, 'owned.csv'), 'window.owned=5');
  writeFileSync(join(site, 'OWNED.HTM'), readFileSync(join(site, 'REPORTS.HTM'), 'utf8').replace('<main', `${injected}<main`));
  const pages = readdirSync(join(site, 'Rhostile'), { recursive: true }).map(String).filter((name) => name.endsWith('.HTM'));
  expect(pages.length === 13, 'hostile report', `has the pages ${pages}`); // 4, and those of 3 devices and their 6 items
  for (const from of [pathToFileURL(site).href, served]) {
    const tab = await browser.newPage();
    for (const name of ['REPORTS.HTM', ...pages.map((page) => `Rhostile/${page}`)]) {
      const address = `${from}/${name.split('/').map(encodeURIComponent).join('/')}`;
      const { url, owned, works, metas, comments, ...none } = await lookAt(tab, address);
      const safe = url === decodeURIComponent(address) && owned === undefined && works && metas === 3 && comments === 1;
      expect(safe && Object.values(none).every((number) => number === 0), `hostile names, ${address}`,
        JSON.stringify({ url, owned, works, metas, comments, ...none }));
      count('hostile pages opened');
    }
    await tab.goto(`${from}/Rhostile/DEVLIST.HTM`);
    const links = await tab.$$eval('#devices > li > a', (found) => found.map((link) => link.href));
    expect(links.length === 3, 'hostile device list', `from ${from}: links to ${links}`);
    for (const link of links) {
      await tab.goto(link);
      const items = await tab.$$eval('main section.item tbody', (found) => found.length);
      expect(items === 2, link, `shows ${items} items`);
    }
    // The policy alone, should a script get into a page after all.
    let refusals = 0;
    tab.on('console', (message) => { refusals += /Content Security Policy/.test(message.text()) ? 1 : 0; });
    await lookAt(tab, `${from}/OWNED.HTM`);
    const owned = await tab.evaluate(() => document.getElementById('x').click() ?? window.owned);
    expect(owned === undefined && refusals >= 6, 'injected scripts', `from ${from}: ${refusals} refused, owned: ${owned}`);
    await tab.close();
  }
}
