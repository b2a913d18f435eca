// Every HTML page that the example projects produce is loaded in headless
// Chromium: a screenshot goes into the test's output folder, the table of
// contents must reach every object's (or PGN's) table and the page may log
// no console error.
import { test, before, after } from 'node:test';
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { copyFileSync, mkdirSync, mkdtempSync, readdirSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { basename, join } from 'node:path';
import { pathToFileURL } from 'node:url';
import puppeteer from 'puppeteer-core';

const binary = process.env.TRW_BINARY;
const examples = join(process.env.TRW_SOURCE_DIR, 'examples');
const screenshots = process.env.TRW_SCREENSHOT_DIR;
const chromium = process.env.TRW_CHROMIUM || '/usr/bin/chromium';

let browser;
let work;

before(async () => {
    work = mkdtempSync(join(tmpdir(), 'trw-html-'));
    mkdirSync(screenshots, { recursive: true });
    browser = await puppeteer.launch({ executablePath: chromium, headless: true, args: ['--no-sandbox'] });
});

after(async () => {
    await browser?.close();
    rmSync(work, { recursive: true, force: true });
});

// Runs trw on a copy of the example, in the text form or a project file, and returns the pages it wrote.
function pagesOf(example) {
    const folder = join(work, example);
    mkdirSync(folder);
    const project = readdirSync(join(examples, example)).find((name) => /\.trw[tp]$/.test(name));
    copyFileSync(join(examples, example, project), join(folder, project));
    execFileSync(binary, ['-project', project], { cwd: folder });
    return readdirSync(folder).filter((name) => name.endsWith('.html')).map((name) => join(folder, name));
}

async function inspect(path) {
    const page = await browser.newPage();
    const problems = [];
    page.on('console', (message) => {
        if (message.type() === 'error') problems.push(message.text());
    });
    page.on('pageerror', (error) => problems.push(error.message));
    page.on('requestfailed', (request) => problems.push(`${request.url()} failed`));
    await page.setViewport({ width: 1280, height: 900 });
    await page.goto(pathToFileURL(path).href, { waitUntil: 'load' });
    await page.screenshot({ path: join(screenshots, basename(path, '.html') + '.png') });
    const links = await page.evaluate(() => {
        const targets = [...document.querySelectorAll('div.toc a')].map((a) => a.getAttribute('href'));
        const tables = [...document.querySelectorAll('table th[id]')].map((th) => th.id);
        return {
            unresolved: targets.filter((href) => !href.startsWith('#') || !document.getElementById(href.slice(1))),
            unlisted: tables.filter((id) => !targets.includes(`#${id}`)),
            tables: tables.length,
        };
    });
    await page.close();
    return { problems, ...links };
}

// A device with raw CAN lines only has no objects or PGNs to document.
const withoutPages = new Set(['rawcan_sensor_gateway']);

for (const example of readdirSync(examples, { withFileTypes: true }).filter(
    (e) => e.isDirectory() && !withoutPages.has(e.name),
)) {
    test(`pages of ${example.name}`, async () => {
        const pages = pagesOf(example.name);
        assert.ok(pages.length > 0, 'no page written');
        for (const path of pages) {
            const result = await inspect(path);
            assert.ok(result.tables > 0, `${basename(path)}: no object table`);
            assert.deepEqual(result.unresolved, [], `${basename(path)}: contents links without target`);
            assert.deepEqual(result.unlisted, [], `${basename(path)}: tables missing from the contents`);
            assert.deepEqual(result.problems, [], `${basename(path)}: console errors`);
        }
    });
}
