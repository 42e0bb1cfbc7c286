// All tests of the page, in one process: they share a browser and a server.

import './access.js'; // first, while there are few boards to be judged in the list
import './models.js';
import './hands.js';
import './undo.js';
import './faults.js';
import './live.js';
import './trace.js';
import './time.js';
import './play.js';
import './boards.js';
import './connection.js';
import './hostile.js';
