// What is done with a board's page, and what it shows of what others do.

import './hands.js';
import './undo.js';
import './faults.js';
import './live.js';
import './trace.js';
import './time.js';
import './play.js';
import './connection.js';
