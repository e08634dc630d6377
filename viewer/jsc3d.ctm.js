// Part of the mesh viewer of libnorvik2d, the project's own code. Scene pages load a file of this name for OpenCTM meshes; this
// viewer doesn't read them, and says so.
"use strict";

JSC3D.unsupported.set("ctm", "OpenCTM files aren't supported by this viewer: it reads Wavefront OBJ.");
