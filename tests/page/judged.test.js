// What is judged by looking: everyone's access, all models, the list of boards, and pages that must get nowhere.

import './access.js'; // first, while there are few boards to be judged in the list
import './models.js';
import './boards.js';
import './hostile.js';
