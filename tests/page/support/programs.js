// The programs that the tests use as people do: vboard, and iodbg on its boards.

import { execFile, spawn } from 'node:child_process';
import { mkdtemp, rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';
import { promisify } from 'node:util';

const execute = promisify(execFile);

const programs = process.env.PAGE_TEST_PROGRAMS;
if (!programs)
    throw new Error('PAGE_TEST_PROGRAMS names the folder with vboard and iodbg; scripts/test-page sets it');

export const scenarios = path.resolve(path.dirname(fileURLToPath(import.meta.url)),
    '../../../examples/scenarios');

/** A program that waits for a clock which nobody moves would wait for ever. */
const patienceMs = 30000;

const vboardFile = path.join(programs, 'vboard');

/** What a command of vboard prints. @param {...string} words */
export async function vboard(...words) {
    return (await execute(vboardFile, words, { timeout: patienceMs, maxBuffer: 1 << 26 })).stdout;
}

/** What iodbg prints on a board. */
export function iodbg(board, ...words) {
    return vboard('run', board.folder, '--', path.join(programs, 'iodbg'), ...words);
}

/** A board in a folder. */
export class Board {
    constructor(parent, name) {
        this.name = name;
        this.folder = path.join(parent, name);
    }

    static async create(parent, name, model = '0x0709', time = 'virtual') {
        const board = new Board(parent, name);
        await vboard('create', '--model', model, '--time', time, board.folder);
        return board;
    }

    /** What a property holds. */
    async get(name) {
        return (await vboard('get', this.folder, name)).trim();
    }

    /** What all properties hold that patterns fit. @returns {Promise<Record<string, any>>} */
    async all(...patterns) {
        return JSON.parse(await vboard('get', this.folder, '--json', ...patterns));
    }

    set(...words) {
        return vboard('set', this.folder, ...words);
    }
}

/** A server, which is ended with the test that has started it. */
export class Server {
    /** @param {string} folder  @param {...string} options */
    static async start(folder, ...options) {
        const server = new Server();
        server.process = spawn(vboardFile, ['serve', folder, ...options], { stdio: ['ignore', 'pipe', 'inherit'] });
        server.ended = new Promise(resolve => server.process.once('exit', resolve));
        const lines = createInterface({ input: server.process.stdout });
        server.address = await new Promise((resolve, reject) => {
            lines.once('line', resolve);
            server.process.once('exit', code => reject(new Error(`vboard serve has ended with ${code}`)));
        });
        return server;
    }

    get port() {
        return new URL(this.address).port;
    }

    /** How the page of a board is opened. */
    pageOf(name) {
        return `${this.address}#/${encodeURIComponent(name)}`;
    }

    /** Its exit code. */
    async end() {
        this.process.kill('SIGTERM');
        return this.ended;
    }
}

export const temporaryFolder = () => mkdtemp(path.join(tmpdir(), 'page-test-'));
export const remove = folder => rm(folder, { recursive: true, force: true });
