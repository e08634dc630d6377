// Part of the mesh viewer of libnorvik2d, the project's own code. Scene pages load a file of this name for old versions of
// Internet Explorer, which know nothing of the language that this viewer is written in.
"use strict";

console.info("jsc3d.ie.js: Internet Explorer isn't supported by this viewer.");
