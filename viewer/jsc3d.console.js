// Part of the mesh viewer of libnorvik2d, the project's own code. Scene pages load a file of this name for a console of their
// own; this viewer has none.
"use strict";

console.info("jsc3d.console.js: a console in the page isn't supported by this viewer; failures go to its onfail(kind, text).");
