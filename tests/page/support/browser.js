// The browser of the tests: one for all of them, a new profile for each.

import { existsSync } from 'node:fs';
import path from 'node:path';
import { chromium } from 'playwright-core';

const names = ['chromium', 'chromium-browser', 'google-chrome'];

function browserFile() {
    const folders = (process.env.PATH ?? '').split(path.delimiter);
    const found = names.flatMap(name => folders.map(folder => path.join(folder, name))).find(existsSync);
    if (!found)
        throw new Error(`none of ${names.join(', ')} is in PATH; scripts/install-dependencies installs chromium`);
    return found;
}

const args = [
    '--no-sandbox', // asks for what containers and root do not have; the pages are the tests' own
    '--disable-gpu', // whose work processors would do, and nobody sees
    '--host-resolver-rules=MAP elsewhere.example 127.0.0.1',
];

export const phone = { width: 390, height: 844 };
export const desk = { width: 1280, height: 900 };

export class Browser {
    static async start() {
        const browser = new Browser();
        browser.chromium = await chromium.launch({ executablePath: browserFile(), args });
        return browser;
    }

    end() {
        return this.chromium.close();
    }

    /** A page with nothing of the others, and all that it writes on its console. */
    async open({ viewport = desk, colorScheme = 'light', reducedMotion = 'reduce' } = {}) {
        const context = await this.chromium.newContext({ viewport, colorScheme, reducedMotion });
        context.setDefaultTimeout(10000);
        const page = await context.newPage();
        const told = [];
        page.on('console', message => told.push(`${message.text()} ${message.location().url}`.trim()));
        page.on('pageerror', error => told.push(String(error)));
        return { page, told, close: () => context.close() };
    }
}

/** Waits until a board is drawn and its past is there. */
export async function shown(page) {
    await page.locator('#drawing [data-part]').first().waitFor();
    await page.locator('#card h2').waitFor();
    return page;
}
