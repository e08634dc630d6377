// Part of the mesh viewer of libnorvik2d, the project's own code. Scene pages load a file of this name to draw with WebGL; this
// viewer does so by itself wherever it can.
"use strict";

console.info("jsc3d.webgl.js: nothing to add, jsc3d.js draws with WebGL by itself.");
