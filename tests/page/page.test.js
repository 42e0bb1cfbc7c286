// All tests of the page, in one process: they share a browser and a server.

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
import './access.js';
