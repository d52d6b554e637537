// Works an interactive chart as its readers do: buttons, wheel, mouse, fingers, keys.

export async function checkChart(tab, address, expect) {
  await tab.setViewport({ width: 1200, height: 900, hasTouch: true });
  await tab.goto(address);
  const settle = () => tab.evaluate(() => new Promise((go) => requestAnimationFrame(() => requestAnimationFrame(go))));
  const shown = async () => {
    await settle();
    return tab.$eval('.plot', (plot) => plot.dataset.shown.split('-').map(Number));
  };
  const span = async () => shown().then(([from, to]) => to - from);
  const press = (label) => tab.click(`.tools button[aria-label="${label}"]`);
  const read = async () => {
    await settle();
    return tab.$eval('.readout', (readout) => readout.textContent);
  };
  const path = async (name) => {
    await settle();
    return tab.$eval(`.view svg svg path.${name}`, (element) => element.getAttribute('d'));
  };

  const data = await tab.evaluate(() => Object.fromEntries(['labels', 'series1', 'series2', 'series3']
    .map((id) => [id, document.getElementById(id).textContent.split(',').map((entry) => entry.trim())])));
  const count = data.labels.length;
  const state = await tab.$eval('.plot', (plot) => plot.dataset.chart === 'state');
  if (!state) {
    const means = data.series1.filter(Boolean).map(Number);
    const average = means.reduce((sum, mean) => sum + mean, 0) / means.length;
    const written = await tab.$eval('#average', (element) => Number(element.textContent));
    expect(Math.abs(written - average) < 1e-5, `says that ${average} is ${written}`);
  }
  const whole = async (after) => expect(String(await shown()) === `0,${count}`, `${after} does not show the whole period`);

  // All of it at first, with axes whose labels stand apart.
  await whole('the start');
  const boxes = await tab.$$eval('.axis text', (texts) => texts.map((text) => {
    const { left, right, top, bottom } = text.getBoundingClientRect();
    return { left, right, top, bottom, text: text.textContent };
  }));
  expect(boxes.length >= 6, `has ${boxes.length} axis labels`);
  const clash = boxes.find((a, i) => boxes.some((b, k) => k > i && a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom));
  expect(!clash, `axis label ${clash?.text} lies on another`);

  // Gaps stay gaps: as many strokes as stretches with data, once every bucket has its own pixel.
  const runs = (list) => list.filter((entry, i) => entry && !list[i - 1]).length;
  if (!state && count < 1000) {
    const strokes = (await path('mean')).split('M').length - 1;
    expect(strokes === runs(data.series1) && strokes > 1, `draws ${strokes} strokes for ${runs(data.series1)} stretches with data`);
  }
  if (state) expect((await path('nodata')) !== '' && (await path('failure')) !== '', 'hides gaps or failures');

  // Zoom and pan: buttons, wheel, drag, keys.
  await press('Zoom in');
  expect(Math.abs(await span() - count / 2) <= 1, `zooming in once shows ${await span()} of ${count}`);
  const [before] = await shown();
  await press('Earlier');
  expect((await shown())[0] < before, 'the button for earlier does not move');
  await press('All of the period');
  await whole('the button All');

  const view = await tab.$('.view');
  await view.evaluate((element) => element.scrollIntoView({ block: 'center' }));
  await new Promise((go) => setTimeout(go, 400)); // the wheel belongs to the page while it scrolls
  const box = await view.boundingBox();
  const at = (part) => [box.x + 58 + part * (box.width - 72), box.y + 80];
  await tab.mouse.move(...at(.5));
  await tab.mouse.wheel({ deltaY: -240 });
  const wheeled = await span();
  expect(wheeled < count * .8, `the wheel shows ${wheeled} of ${count}`);
  await tab.mouse.wheel({ deltaY: 2000 });
  await tab.mouse.wheel({ deltaY: 2000 });
  await tab.mouse.wheel({ deltaY: 2000 });
  await whole('turning the wheel back');

  const drag = async (from, to) => {
    await tab.mouse.move(...at(from));
    await tab.mouse.down();
    await tab.mouse.move(...at((from + to) / 2));
    await tab.mouse.move(...at(to));
    await tab.mouse.up();
  };
  await drag(.25, .5);
  const [from, to] = await shown();
  expect(Math.abs(from - count / 4) <= 2 && Math.abs(to - count / 2) <= 2, `dragging over the second quarter shows ${from} to ${to} of ${count}`);
  await tab.keyboard.down('Shift');
  await drag(.2, .7);
  await tab.keyboard.up('Shift');
  const moved = await shown();
  expect(moved[0] < from && Math.abs(moved[1] - moved[0] - (to - from)) <= 1, `dragging with Shift shows ${moved}`);

  await view.focus();
  await tab.keyboard.press('0');
  await whole('the key 0');
  await tab.keyboard.press('+');
  expect(await span() < count * .6, 'the key + does not zoom');
  await tab.keyboard.press('Escape');
  await whole('the key Escape');

  // Two fingers: what is under them goes along.
  const session = await tab.createCDPSession();
  const touch = (type, ...parts) => session.send('Input.dispatchTouchEvent', { type,
    touchPoints: parts.map((part, id) => ({ x: at(part)[0], y: at(part)[1], id })) });
  await touch('touchStart', .4, .6);
  await touch('touchMove', .3, .7);
  await touch('touchMove', .1, .9);
  await touch('touchEnd');
  const pinched = await span();
  expect(pinched < count * .5, `pinching shows ${pinched} of ${count}`);
  await tab.keyboard.press('0');
  await whole('the key 0 after pinching');

  // Values are read out as they stand in the table.
  await tab.evaluate(() => { document.querySelector('main details').open = true; });
  await tab.waitForFunction((rows) => document.querySelectorAll('#values tbody tr').length === rows, {}, count);
  const wanted = data.series1.findIndex(Boolean);
  await view.focus();
  await tab.keyboard.press('Home');
  for (let i = 0; i < wanted; ++i) await tab.keyboard.press('ArrowRight');
  const words = await read();
  expect(words.startsWith(data.labels[wanted]), `reads "${words}" at ${data.labels[wanted]}`);
  const parts = state ? ['Success rate', `Success ${data.series1[wanted]}`, `Failed ${data.series2[wanted]}`]
    : ['Mean', 'Least to greatest', '95th percentile', 'Moving', 'Average'];
  for (const part of parts) expect(words.includes(part), `does not read "${part}" in "${words}"`);
  const cells = await tab.$$eval('#values tbody tr', (rows, i) => [...rows[i].cells].map((cell) => cell.textContent), wanted);
  expect(cells[0] === data.labels[wanted] && Math.abs(Number(cells[1].replaceAll(',', '')) - Number(data.series1[wanted])) < .01,
    `tells "${cells}" in the table at ${data.labels[wanted]}`);
  const gap = data.series1.findIndex((entry) => !entry);
  await tab.keyboard.press('Home');
  for (let i = 0; i < gap; ++i) await tab.keyboard.press('ArrowRight');
  expect(/no data/.test(await read()), `reads "${await read()}" in a gap`);
  expect(await tab.$eval('.readout', (readout) => readout.getAttribute('aria-live') === 'polite'), 'does not speak what the keys read');

  if (state) {
    await tab.keyboard.press('Escape');
    const failed = data.series2.map((entry) => Number(entry) > 0);
    const begins = failed.flatMap((bad, i) => (bad && !failed[i - 1] ? [i] : []));
    for (const begin of [begins[0], begins[1]]) {
      await press('Next failure');
      const words = await read();
      expect(words.startsWith(data.labels[begin]) && words.includes(`Failed ${data.series2[begin]}`), `reads "${words}" as a failure, not ${data.labels[begin]}`);
    }
  }

  // Pointing reads, too; leaving tells of the stretch.
  await tab.mouse.move(...at(.5));
  const pointed = await read();
  expect(data.labels.slice(Math.floor(count / 2) - 1, Math.floor(count / 2) + 2).some((label) => pointed.startsWith(label)), `reads "${pointed}" in the middle`);
  await tab.mouse.move(2, 2);
  const lowest = state ? ' Lowest success rate ' : ' Least single sample ';
  expect((await read()).startsWith(`${data.labels[0]} to ${data.labels.at(-1)}${lowest}`), `reads "${await read()}" when nothing is pointed at`);

  // Series go and come back.
  const series = state ? { 'With failures': 'failure', 'No data': 'nodata', Overall: 'overall' }
    : { Mean: 'mean', 'Least to greatest': 'band', '95th': 'percentile', Moving: 'moving', Average: 'average' };
  for (const [name, kind] of Object.entries(series)) {
    const key = await tab.evaluateHandle((start) => [...document.querySelectorAll('.legend button')].find((button) => button.textContent.startsWith(start)), name);
    const drawn = await path(kind);
    await key.click();
    expect(drawn && !await path(kind) && await key.evaluate((button) => button.getAttribute('aria-pressed')) === 'false', `${name} does not go`);
    await key.click();
    expect(await path(kind) === drawn, `${name} does not come back`);
  }
}
