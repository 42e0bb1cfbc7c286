// The page: a board, or the list of those that the server has.

import { NoAnswer, server } from './api.js';
import { BoardPage } from './board_page.js';
import { Boards } from './boards.js';
import { Descriptions } from './descriptions.js';
import { byId, setText } from './elements.js';
import { Messages } from './messages.js';
import { acceptDrops, Twins } from './twins.js';

const pauseMs = 1000;

const messages = new Messages(byId('messages'));
const boards = new Boards(byId('board-list'), error => connect({ isLive: !error, reason: error?.message ?? '' }));
const twins = new Twins(byId('twin'), messages, () => boards.refresh());

/** The page of the board that is shown. */
let page = null;
/** What is the same for all boards, and who the server is. */
let words = null;

function connect({ isLive, reason }) {
    const banner = byId('connection');
    banner.hidden = isLive;
    setText(banner, isLive ? '' : `${reason} Trying again…`);
    document.body.classList.toggle('lost', !isLive);
}

const sleep = ms => new Promise(resolve => setTimeout(resolve, ms));

/** Asks until somebody answers. */
async function asked(question) {
    for (;;) {
        try {
            const answer = await question();
            connect({ isLive: true, reason: '' });
            return answer;
        } catch (error) {
            connect({ isLive: false, reason: error.message });
            if (!(error instanceof NoAnswer))
                throw error;
            await sleep(pauseMs);
        }
    }
}

async function loadWords() {
    const [descriptions, effects, served] = await asked(() => Promise.all(
        [Descriptions.load(), server.effects(), server.boards()]));
    return { descriptions, effects, served };
}

/** The board that the address names, or the one that there is. */
function nameOfShown() {
    const named = location.hash.match(/^#\/(.+)$/);
    if (named)
        return decodeURIComponent(named[1]);
    const { canCreate, boards: all } = words.served;
    return !canCreate && all.length === 1 ? all[0].name : '';
}

function route() {
    const name = nameOfShown();
    if (page?.api.name === name)
        return;
    page?.end();
    page = null;
    messages.clear();
    byId('board-view').hidden = name === '';
    byId('boards-view').hidden = name !== '';
    byId('board-bar').hidden = name === '';
    byId('all-boards').hidden = name === '' || !words.served.canCreate;
    byId('twin').hidden = !words.served.canCreate;
    setText(byId('title'), name || 'Virtual boards');
    setText(byId('model'), name ? '' : words.served.folder);
    document.title = name ? `${name} – virtual board` : 'Virtual boards';
    if (name) {
        boards.close();
        page = new BoardPage(name, words, messages, connect);
    } else {
        boards.open();
    }
}

function takeDrop(dropped) {
    if (!words?.served.canCreate) {
        messages.show('Boards are made of captured units where a folder is served: vboard serve FOLDER');
        return;
    }
    if (page)
        location.hash = '#/';
    twins.drop(dropped);
}

acceptDrops(document.body, takeDrop);
addEventListener('hashchange', () => words && route());
words = await loadWords();
document.body.classList.remove('loading');
route();
