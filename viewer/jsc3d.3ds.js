// Part of the mesh viewer of libnorvik2d, the project's own code. Scene pages load a file of this name for 3D Studio meshes;
// this viewer doesn't read them, and says so.
"use strict";

JSC3D.unsupported.set("3ds", "3D Studio files aren't supported by this viewer: it reads Wavefront OBJ.");
