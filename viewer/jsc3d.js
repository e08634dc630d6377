// The mesh viewer of libnorvik2d. This is the project's own code; it only offers the calls that scene pages expect:
//
//   const viewer = new JSC3D.Viewer(canvas);
//   viewer.setParameter("SceneUrl", "3d.obj");   // unknown names are kept, and mean nothing
//   viewer.init();                               // begins to load the scene
//   viewer.update();                             // draws anew, in the next frame
//   viewer.replaceSceneFromUrl(url);             // or replaceSceneFromFile(file)
//
// Parameters that mean something: SceneUrl, ShowEdges, ShowFilling, ColorByAngle, DragTurns (booleans), FillColor,
// EdgeColor, PickColor ("#rrggbb"), Renderer ("2d" does without WebGL).
//
// A page hears what happens through onprogress(share, text), onload(mesh), onfail(kind, text), onhover(place) and
// onpick(triangle). Scripts that follow in the page add more: jsc3d.touch.js adds fingers.
"use strict";

const JSC3D = (() => {
    // ---- Time slices: the page stays alive while much is done

    const SLICE_MS = 25;
    /** For drawing: each slice costs the browser a frame as well. */
    const LONG_SLICE_MS = 60;

    /** Timers are slowed down in hidden pages; messages to oneself aren't. */
    function breathe() {
        return new Promise((resolve) => {
            const channel = new MessageChannel();
            channel.port1.onmessage = () => {
                channel.port1.close();
                resolve();
            };
            channel.port2.postMessage(0);
        });
    }

    /** Another scene was asked for meanwhile. */
    class Abandoned extends Error {}

    /** One load of a scene: knows when to rest, and whether anybody still waits for it. */
    class Job {
        constructor(viewer) {
            this.viewer = viewer;
            this.sliceEnd = performance.now() + SLICE_MS;
        }
        isDue() {
            return performance.now() >= this.sliceEnd;
        }
        async rest(share, text) {
            this.tell(share, text);
            await breathe();
            this.tell(share, text);
            this.sliceEnd = performance.now() + SLICE_MS;
        }
        tell(share, text) {
            if (this.viewer.job !== this) throw new Abandoned();
            this.viewer.onprogress(share, text);
        }
    }

    // ---- Reading OBJ

    const TAB = 9, NEWLINE = 10, RETURN = 13, BLANK = 32, HASH = 35, PLUS = 43, MINUS = 45, POINT = 46, ZERO = 48;
    const NINE = 57, LARGE_E = 69, SMALL_E = 101, SMALL_F = 102, SMALL_V = 118;

    const isBlank = (c) => c === BLANK || c === TAB || c === RETURN;
    const isDigit = (c) => c >= ZERO && c <= NINE;

    /** The powers of ten that are doubles. */
    const POWERS = Array.from({ length: 23 }, (_, i) => Number("1e" + i));

    function timesPowerOfTen(value, exponent) {
        if (exponent >= 0) return exponent < 23 ? value * POWERS[exponent] : value * Math.pow(10, exponent);
        if (exponent > -23) return value / POWERS[-exponent];
        // In two steps: neither power overflows where the result doesn't.
        const half = exponent >> 1;
        return (value * Math.pow(10, half)) * Math.pow(10, exponent - half);
    }

    /** Typed numbers, as many as come. */
    class Growing {
        constructor(Type, capacity) {
            this.data = new Type(Math.max(16, capacity));
            this.size = 0;
        }
        push(value) {
            if (this.size === this.data.length) this.grow();
            this.data[this.size++] = value;
        }
        grow() {
            const larger = new this.data.constructor(2 * this.data.length);
            larger.set(this.data);
            this.data = larger;
        }
        values() {
            return this.data.subarray(0, this.size);
        }
    }

    /** Reads vertices and faces in one pass over the characters. What it can't read it counts, and keeps the first reason. */
    class ObjReader {
        constructor(bytes) {
            this.bytes = bytes;
            this.at = 0;
            this.line = 1;
            // A line of a vertex is rarely shorter than 20 characters, one of a face than 8.
            this.coordinates = new Growing(Float64Array, bytes.length >> 4);
            this.corners = new Growing(Uint32Array, bytes.length >> 4);
            this.numFaces = 0;
            this.numBad = 0;
            this.reason = "";
            this.largestIndex = 0;
            this.largestLine = 0;
        }

        async read(job) {
            const size = this.bytes.length;
            while (this.at < size) {
                for (let i = 0; i < 2000 && this.at < size; ++i) this.readLine();
                if (job.isDue()) await job.rest(this.at / size, "Reading");
            }
            this.dropWhatNamesNothing();
        }

        readLine() {
            this.skipBlanks();
            const c = this.bytes[this.at];
            if ((c === SMALL_V || c === SMALL_F) && isBlank(this.bytes[this.at + 1])) {
                ++this.at;
                if (c === SMALL_V) this.readVertex();
                else this.readFace();
            }
            const end = this.bytes.indexOf(NEWLINE, this.at);
            this.at = end < 0 ? this.bytes.length : end + 1;
            ++this.line;
        }

        readVertex() {
            const x = this.readNumber(), y = this.readNumber();
            const z = this.isAtLineEnd() ? 0 : this.readNumber();
            const good = Number.isFinite(x) && Number.isFinite(y) && Number.isFinite(z);
            if (!good) this.blame("a vertex isn't made of numbers");
            // It keeps its place, so that the others keep their numbers.
            this.coordinates.push(good ? x : NaN);
            this.coordinates.push(y);
            this.coordinates.push(z);
        }

        /** Polygons become fans of triangles. */
        readFace() {
            const numVertices = this.coordinates.size / 3, sizeBefore = this.corners.size;
            let first = 0, previous = 0, numCorners = 0;
            ++this.numFaces;
            while (!this.isAtLineEnd()) {
                let index = this.readNumber();
                this.skipWord();  // behind a slash stand numbers of textures and normals
                if (index < 0) index += numVertices + 1;
                if (!(index >= 1 && index < 4294967296 && index === Math.floor(index))) {
                    this.corners.size = sizeBefore;
                    return this.blame("a face names a vertex that can't be");
                }
                if (index > this.largestIndex) {
                    this.largestIndex = index;
                    this.largestLine = this.line;
                }
                if (++numCorners === 1) first = index;
                if (numCorners >= 3) {
                    this.corners.push(first - 1);
                    this.corners.push(previous - 1);
                    this.corners.push(index - 1);
                }
                previous = index;
            }
            if (numCorners < 3) this.blame("a face has less than three corners");
        }

        /** Faces may stand before their vertices, so only now it is known which of these never come. */
        dropWhatNamesNothing() {
            const coordinates = this.coordinates.values(), corners = this.corners.data;
            const numVertices = coordinates.length / 3;
            if (this.largestIndex > numVertices)
                this.blame(`a face names vertex ${this.largestIndex} of ${numVertices}`, this.largestLine);
            if (this.numBad === 0) return;
            const isGood = (i) => i < numVertices && coordinates[3 * i] === coordinates[3 * i];
            let numKept = 0;
            for (let i = 0; i < this.corners.size; i += 3) {
                if (!isGood(corners[i]) || !isGood(corners[i + 1]) || !isGood(corners[i + 2])) continue;
                for (let k = 0; k < 3; ++k) corners[numKept++] = corners[i + k];
            }
            this.corners.size = numKept;
        }

        blame(reason, line = this.line) {
            if (++this.numBad === 1) this.reason = `line ${line}: ${reason}`;
        }

        skipBlanks() {
            while (isBlank(this.bytes[this.at])) ++this.at;
        }

        isAtLineEnd() {
            this.skipBlanks();
            const c = this.bytes[this.at];
            return c === NEWLINE || c === HASH || this.at >= this.bytes.length;
        }

        skipWord() {
            const bytes = this.bytes;
            while (this.at < bytes.length && !isBlank(bytes[this.at]) && bytes[this.at] !== NEWLINE) ++this.at;
        }

        /** NaN where there is no number. Good to two units in the last place, of however many digits it is made. */
        readNumber() {
            this.skipBlanks();
            const bytes = this.bytes;
            let at = this.at, c = bytes[at];
            const negative = c === MINUS;
            if (negative || c === PLUS) c = bytes[++at];
            // Fifteen digits fit a double and ten more a second one; later ones don't matter.
            let high = 0, low = 0, numDigits = 0, numLow = 0, exponent = 0, seenAny = false, seenPoint = false;
            for (;; c = bytes[++at]) {
                if (c === POINT && !seenPoint) {
                    seenPoint = true;
                    continue;
                }
                if (!isDigit(c)) break;
                seenAny = true;
                if (seenPoint) --exponent;
                if (numDigits < 15) {
                    high = 10 * high + (c - ZERO);
                    if (high > 0) ++numDigits;
                } else if (numLow < 10) {
                    low = 10 * low + (c - ZERO);
                    ++numLow;
                } else {
                    ++exponent;
                }
            }
            if (!seenAny) return NaN;
            if (c === LARGE_E || c === SMALL_E) {
                c = bytes[++at];
                const down = c === MINUS;
                if (down || c === PLUS) c = bytes[++at];
                let power = 0;
                for (; isDigit(c); c = bytes[++at]) power = Math.min(9999, 10 * power + (c - ZERO));
                exponent += down ? -power : power;
            }
            this.at = at;
            const digits = numLow === 0 ? high : high * POWERS[numLow] + low;
            const value = exponent === 0 || digits === 0 ? digits : timesPowerOfTen(digits, exponent);
            return negative ? -value : value;
        }
    }

    // ---- The mesh

    /** Triangles, and the cube around them. Drawn and picked are "places": the cube's centre is 0, its half edge 1. */
    class Mesh {
        constructor(reader) {
            this.coordinates = reader.coordinates.values();
            this.corners = reader.corners.values();
            this.numVertices = this.coordinates.length / 3;
            this.numTriangles = this.corners.length / 3;
            this.numBad = reader.numBad;
            this.reason = reader.reason;
            this.low = [Infinity, Infinity, Infinity];
            this.high = [-Infinity, -Infinity, -Infinity];
            for (const corner of this.corners)
                for (let k = 0; k < 3; ++k) {
                    const value = this.coordinates[3 * corner + k];
                    if (value < this.low[k]) this.low[k] = value;
                    if (value > this.high[k]) this.high[k] = value;
                }
            this.center = this.low.map((low, k) => low / 2 + this.high[k] / 2);
            const halves = this.low.map((low, k) => this.high[k] / 2 - low / 2);
            this.half = Math.max(...halves) || 1;
            this.isFlat = halves[2] === 0;
            /** Of each triangle, 255 for 60 degrees. */
            this.angles = new Uint8Array(this.numTriangles);
            this.smallestAngle = 60;
        }

        /** All is taken off in double: what is a float later is small, wherever on the map the mesh lies. */
        place(corner, k) {
            return (this.coordinates[3 * corner + k] - this.center[k]) / this.half;
        }

        async measure(job) {
            for (let i = 0; i < this.numTriangles; ++i) {
                const angle = this.shapeOf(i).smallestAngle;
                if (angle < this.smallestAngle) this.smallestAngle = angle;
                this.angles[i] = Math.round(angle / 60 * 255);
                if ((i & 4095) === 0 && job.isDue()) await job.rest(i / this.numTriangles, "Measuring");
            }
        }

        /** The smallest angle, in degrees, lies opposite the shortest side. */
        shapeOf(i) {
            const a = this.corners[3 * i], b = this.corners[3 * i + 1], c = this.corners[3 * i + 2];
            const ax = this.place(a, 0), ay = this.place(a, 1), az = this.place(a, 2);
            const bx = this.place(b, 0), by = this.place(b, 1), bz = this.place(b, 2);
            const ux = bx - ax, uy = by - ay, uz = bz - az;
            const vx = this.place(c, 0) - ax, vy = this.place(c, 1) - ay, vz = this.place(c, 2) - az;
            const wx = this.place(c, 0) - bx, wy = this.place(c, 1) - by, wz = this.place(c, 2) - bz;
            const uu = ux * ux + uy * uy + uz * uz, vv = vx * vx + vy * vy + vz * vz, ww = wx * wx + wy * wy + wz * wz;
            const nx = uy * vz - uz * vy, ny = uz * vx - ux * vz, nz = ux * vy - uy * vx;
            const twiceArea = Math.sqrt(nx * nx + ny * ny + nz * nz);
            let cosine = ux * vx + uy * vy + uz * vz;
            if (uu < ww && uu <= vv) cosine = vx * wx + vy * wy + vz * wz;
            else if (vv < ww) cosine = -(ux * wx + uy * wy + uz * wz);
            return {
                area: twiceArea / 2 * this.half * this.half,
                smallestAngle: Math.atan2(twiceArea, cosine) * 180 / Math.PI,
            };
        }

        describe(i) {
            const corners = Array.from(this.corners.subarray(3 * i, 3 * i + 3), (corner) => ({
                number: corner + 1,
                point: Array.from(this.coordinates.subarray(3 * corner, 3 * corner + 3)),
            }));
            return Object.assign({ number: i + 1, corners }, this.shapeOf(i));
        }
    }

    // ---- The view

    /** What is seen: the place in the middle of the canvas, pixels for a unit of place, and how the mesh is turned. */
    class View {
        constructor() {
            this.width = 1;
            this.height = 1;
            this.deepest = 1e12;
            this.fit(null);
        }

        fit(mesh) {
            this.target = [0, 0, 0];
            this.yaw = 0;
            this.tilt = 0;
            this.turn(0, 0);
            const spanOf = (k) => mesh === null ? 1 : Math.max((mesh.high[k] / 2 - mesh.low[k] / 2) / mesh.half, 1e-9);
            this.scale = 0.46 * Math.min(this.width / spanOf(0), this.height / spanOf(1));
            this.widest = Math.min(this.scale, this.width, this.height) / 20;
            // Deeper than this there is nothing between two doubles.
            const magnitude = mesh === null ? 1 : Math.max(...mesh.low.map(Math.abs), ...mesh.high.map(Math.abs));
            this.deepest = mesh === null ? 1e12 : Math.max(1e3, 1e15 * mesh.half / magnitude);
        }

        /** Around the vertical of the map, and down from it. */
        turn(yaw, tilt) {
            this.yaw += yaw;
            this.tilt = Math.max(-Math.PI, Math.min(Math.PI, this.tilt + tilt));
            const cy = Math.cos(this.yaw), sy = Math.sin(this.yaw), ct = Math.cos(this.tilt), st = Math.sin(this.tilt);
            this.rows = [[cy, -sy, 0], [sy * ct, cy * ct, -st], [sy * st, cy * st, ct]];
        }

        isTurned() {
            return this.yaw !== 0 || this.tilt !== 0;
        }

        /** Moves what is seen by pixels. */
        pan(dx, dy) {
            for (let k = 0; k < 3; ++k)
                this.target[k] -= (this.rows[0][k] * dx - this.rows[1][k] * dy) / this.scale;
        }

        /** What lies under that pixel stays there. */
        zoom(factor, x, y) {
            const scale = Math.max(this.widest, Math.min(this.deepest, this.scale * factor));
            const share = 1 - this.scale / scale, dx = x - this.width / 2, dy = y - this.height / 2;
            this.pan(-dx * share, -dy * share);
            this.scale = scale;
        }

        /** Where a vertex is drawn: pixels from the middle, to the right and up. */
        pixelOf(mesh, corner) {
            const [right, up] = this.rows, [tx, ty, tz] = this.target;
            const dx = mesh.place(corner, 0) - tx, dy = mesh.place(corner, 1) - ty, dz = mesh.place(corner, 2) - tz;
            return [
                this.scale * (right[0] * dx + right[1] * dy + right[2] * dz),
                this.scale * (up[0] * dx + up[1] * dy + up[2] * dz),
            ];
        }

        /** The place under a pixel, on the horizontal plane through the mesh's middle; null where that is seen from its edge. */
        placeUnder(x, y) {
            const [right, up, near] = this.rows;
            const u = (x - this.width / 2) / this.scale, v = (this.height / 2 - y) / this.scale;
            const p = [0, 1, 2].map((k) => this.target[k] + right[k] * u + up[k] * v);
            if (Math.abs(near[2]) < 0.02) return null;
            const depth = p[2] / near[2];
            return [p[0] - depth * near[0], p[1] - depth * near[1], 0];
        }

        /** The triangle under a pixel, the nearest where there are more; -1 for none. */
        triangleUnder(mesh, x, y) {
            const u = (x - this.width / 2) / this.scale, v = (this.height / 2 - y) / this.scale;
            const [right, up, near] = this.rows, { corners, coordinates, center, half } = mesh;
            const [tx, ty, tz] = this.target, px = new Float64Array(3), py = new Float64Array(3), pz = new Float64Array(3);
            let best = -1, bestDepth = -Infinity;
            for (let i = 0; i < corners.length; i += 3) {
                for (let k = 0; k < 3; ++k) {
                    const at = 3 * corners[i + k];
                    const dx = (coordinates[at] - center[0]) / half - tx;
                    const dy = (coordinates[at + 1] - center[1]) / half - ty;
                    const dz = (coordinates[at + 2] - center[2]) / half - tz;
                    px[k] = right[0] * dx + right[1] * dy + right[2] * dz - u;
                    py[k] = up[0] * dx + up[1] * dy + up[2] * dz - v;
                    pz[k] = near[0] * dx + near[1] * dy + near[2] * dz;
                }
                const a = px[1] * py[2] - px[2] * py[1], b = px[2] * py[0] - px[0] * py[2];
                const c = px[0] * py[1] - px[1] * py[0], sum = a + b + c;
                const inside = (a >= 0 && b >= 0 && c >= 0) || (a <= 0 && b <= 0 && c <= 0);
                if (!inside || sum === 0) continue;
                const depth = (a * pz[0] + b * pz[1] + c * pz[2]) / sum;
                if (depth <= bestDepth) continue;
                best = i / 3;
                bestDepth = depth;
            }
            return best;
        }
    }

    // ---- Colours

    /** From the flattest triangles to the equilateral ones; told apart by colour-blind eyes too. */
    const ANGLE_COLORS = ["#b2182b", "#ef8a62", "#f7e3c8", "#8fc1dd", "#2a6fb5"];

    function rgbOf(hex) {
        const n = parseInt(hex.slice(1), 16);
        return [(n >> 16 & 255) / 255, (n >> 8 & 255) / 255, (n & 255) / 255];
    }

    const ANGLE_RGB = ANGLE_COLORS.map(rgbOf);

    /** The colour of an angle, 255 for 60 degrees. */
    function rgbOfAngle(angle) {
        const at = angle / 255 * (ANGLE_RGB.length - 1), i = Math.min(Math.floor(at), ANGLE_RGB.length - 2);
        return ANGLE_RGB[i].map((c, k) => c + (ANGLE_RGB[i + 1][k] - c) * (at - i));
    }

    // ---- Drawing with WebGL

    const VERTEX_SHADER = `#version 300 es
        in vec3 place;
        in vec2 traits;  // the angle, and bits: sides that aren't the mesh's edges, and 8 for picked
        uniform mat3 turn;
        uniform vec3 target;
        uniform vec2 scale;
        uniform int picked;
        out vec3 share;
        out vec3 seen;
        flat out float angleOf;
        flat out float isPicked;
        void main() {
            int k = gl_VertexID % 3;
            int bits = int(traits.y);
            share = vec3(k == 0, k == 1, k == 2) + vec3(bits & 1, bits >> 1 & 1, bits >> 2 & 1);
            seen = turn * (place - target);
            angleOf = traits.x / 255.0;
            isPicked = float(gl_VertexID / 3 == picked || (bits & 8) != 0);
            gl_Position = vec4(seen.xy * scale, -0.5 * (turn * place).z, 1.0);
        }`;

    // The distance from an edge in pixels is the corner's share over the share's change from pixel to pixel. Where triangles
    // are hardly larger than pixels edges fade, or they would cover everything.
    const FRAGMENT_SHADER = `#version 300 es
        precision highp float;
        in vec3 share;
        in vec3 seen;
        flat in float angleOf;
        flat in float isPicked;
        uniform bool edges, filling, byAngle;
        uniform vec3 fillColor, edgeColor, pickColor, ramp[${ANGLE_RGB.length}];
        uniform float lineWidth;
        out vec4 color;
        void main() {
            vec3 dx = dFdx(share), dy = dFdy(share);
            vec3 pixels = share / max(sqrt(dx * dx + dy * dy), vec3(1e-9));
            float size = inversesqrt(2.0 * max(abs(dx.x * dy.y - dx.y * dy.x), 1e-12));
            float line = 1.0 - smoothstep(0.5 * lineWidth - 0.5, 0.5 * lineWidth + 0.5, min(pixels.x, min(pixels.y, pixels.z)));
            line *= edges ? mix(0.15, 1.0, smoothstep(0.5, 5.0, size)) : 0.0;
            vec3 fill = fillColor;
            if (byAngle) {
                float at = angleOf * float(${ANGLE_RGB.length - 1});
                int i = min(int(at), ${ANGLE_RGB.length - 2});
                fill = mix(ramp[i], ramp[i + 1], at - float(i));
            }
            vec3 normal = cross(dFdx(seen), dFdy(seen));
            float steepness = length(normal);
            fill *= steepness > 0.0 ? 0.6 + 0.4 * abs(normal.z) / steepness : 1.0;
            fill = mix(fill, pickColor, 0.85 * isPicked);
            float cover = filling || isPicked > 0.5 ? 1.0 : 0.0;
            float alpha = max(cover, line);
            if (alpha < 0.02) discard;
            color = vec4(mix(fill * cover, edgeColor * alpha, line), alpha);
        }`;

    const TRIANGLES_A_BLOCK = 1 << 18;
    const BYTES_A_CORNER = 16;

    class GlRenderer {
        /** Null where there is no WebGL2. */
        static create(canvas) {
            const gl = canvas.getContext("webgl2", { antialias: true, powerPreference: "high-performance" });
            return gl === null ? null : new GlRenderer(gl);
        }

        constructor(gl) {
            this.gl = gl;
            this.name = "WebGL";
            this.prepare();
        }

        /** What a lost context loses too. */
        prepare() {
            const gl = this.gl, program = gl.createProgram();
            const attach = (type, text) => {
                const shader = gl.createShader(type);
                gl.shaderSource(shader, text);
                gl.compileShader(shader);
                gl.attachShader(program, shader);
            };
            attach(gl.VERTEX_SHADER, VERTEX_SHADER);
            attach(gl.FRAGMENT_SHADER, FRAGMENT_SHADER);
            gl.bindAttribLocation(program, 0, "place");
            gl.bindAttribLocation(program, 1, "traits");
            gl.linkProgram(program);
            if (!gl.getProgramParameter(program, gl.LINK_STATUS) && !gl.isContextLost())
                throw new Error("the graphics driver refuses the shaders: " + gl.getProgramInfoLog(program));
            gl.useProgram(program);
            gl.enable(gl.DEPTH_TEST);
            gl.depthFunc(gl.LEQUAL);
            gl.enable(gl.BLEND);
            gl.blendFunc(gl.ONE, gl.ONE_MINUS_SRC_ALPHA);
            this.uniform = (name) => gl.getUniformLocation(program, name);
            this.blocks = [];
            this.mesh = null;
        }

        async setMesh(mesh, job) {
            const blocks = [];
            try {
                for (let i = 0; i < mesh.numTriangles; i += TRIANGLES_A_BLOCK) {
                    const end = Math.min(mesh.numTriangles, i + TRIANGLES_A_BLOCK);
                    blocks.push(this.upload(mesh, i, end));
                    if (job) await job.rest(end / mesh.numTriangles, "Handing over to the graphics card");
                }
                if (this.gl.getError() === this.gl.OUT_OF_MEMORY)
                    throw new Error("The graphics card hasn't enough memory for this mesh.");
                [this.mesh, this.blocks] = [mesh, blocks.splice(0, blocks.length, ...this.blocks)];
            } finally {
                this.clear(blocks);
            }
        }

        upload(mesh, begin, end) {
            const corners = new CornerList(3 * (end - begin));
            for (let i = 3 * begin; i < 3 * end; ++i) {
                const corner = mesh.corners[i];
                corners.push(mesh.place(corner, 0), mesh.place(corner, 1), mesh.place(corner, 2), mesh.angles[Math.floor(i / 3)], 0);
            }
            return this.makeBlock(corners);
        }

        makeBlock(corners) {
            const gl = this.gl, block = { vao: gl.createVertexArray(), buffer: gl.createBuffer(), size: corners.size / 3 };
            gl.bindVertexArray(block.vao);
            gl.bindBuffer(gl.ARRAY_BUFFER, block.buffer);
            gl.bufferData(gl.ARRAY_BUFFER, corners.memory(), gl.STATIC_DRAW);
            gl.enableVertexAttribArray(0);
            gl.vertexAttribPointer(0, 3, gl.FLOAT, false, BYTES_A_CORNER, 0);
            gl.enableVertexAttribArray(1);
            gl.vertexAttribPointer(1, 2, gl.UNSIGNED_BYTE, false, BYTES_A_CORNER, 12);
            return block;
        }

        clear(blocks) {
            for (const { vao, buffer } of blocks.splice(0)) {
                this.gl.deleteVertexArray(vao);
                this.gl.deleteBuffer(buffer);
            }
        }

        draw(view, look, pixelRatio) {
            const gl = this.gl;
            gl.viewport(0, 0, gl.drawingBufferWidth, gl.drawingBufferHeight);
            gl.clearColor(0, 0, 0, 0);
            gl.clear(gl.COLOR_BUFFER_BIT | gl.DEPTH_BUFFER_BIT);
            if (this.mesh === null) return;
            gl.uniformMatrix3fv(this.uniform("turn"), true, [].concat(...view.rows));
            gl.uniform2f(this.uniform("scale"), 2 * view.scale / view.width, 2 * view.scale / view.height);
            for (const name of ["edges", "filling", "byAngle"]) gl.uniform1i(this.uniform(name), look[name]);
            for (const name of ["fillColor", "edgeColor", "pickColor"])
                gl.uniform3fv(this.uniform(name), rgbOf(look[name]));
            gl.uniform3fv(this.uniform("ramp"), [].concat(...ANGLE_RGB));
            gl.uniform1f(this.uniform("lineWidth"), pixelRatio);
            // Floats reach down to the 2^-24th part of the mesh; where pixels come near that they are told from the middle of the view.
            if (view.scale > 1 << 19 && this.mesh.isFlat && !view.isTurned()) this.drawDeep(view, look.picked);
            else this.drawBlocks(this.blocks, view.target, look.picked);
        }

        drawBlocks(blocks, target, picked) {
            const gl = this.gl;
            gl.uniform3fv(this.uniform("target"), target);
            let numBefore = 0;
            for (const { vao, size } of blocks) {
                gl.uniform1i(this.uniform("picked"), picked < numBefore ? -1 : picked - numBefore);
                gl.bindVertexArray(vao);
                gl.drawArrays(gl.TRIANGLES, 0, 3 * size);
                numBefore += size;
            }
        }

        /** What is seen of each triangle is cut out in double, and drawn as a fan. */
        drawDeep(view, picked) {
            const mesh = this.mesh, corners = new CornerList(3072);
            for (let i = 0; i < mesh.numTriangles; ++i) {
                if (!mayBeSeen(mesh, view, i)) continue;
                const part = cutToView([0, 1, 2].map((k) => view.pixelOf(mesh, mesh.corners[3 * i + k])), view);
                for (let k = 2; k < part.length; ++k) {
                    const bits = (i === picked ? 8 : 0) | (k < part.length - 1 ? 2 : 0) | (k > 2 ? 4 : 0);
                    for (const [x, y] of [part[0], part[k - 1], part[k]])
                        corners.push(x / view.scale, y / view.scale, 0, mesh.angles[i], bits);
                }
            }
            const blocks = [this.makeBlock(corners)];
            this.drawBlocks(blocks, [0, 0, 0], -1);
            this.clear(blocks);
        }
    }

    /** What the graphics card gets of each corner: three floats and two bytes. */
    class CornerList {
        constructor(capacity) {
            this.size = 0;
            this.makeViews(new ArrayBuffer(capacity * BYTES_A_CORNER));
        }
        makeViews(memory) {
            this.floats = new Float32Array(memory);
            this.bytes = new Uint8Array(memory);
        }
        push(x, y, z, angle, bits) {
            const at = 4 * this.size++;
            if (at === this.floats.length) {
                const old = this.bytes;
                this.makeViews(new ArrayBuffer(2 * old.length));
                this.bytes.set(old);
            }
            this.floats[at] = x;
            this.floats[at + 1] = y;
            this.floats[at + 2] = z;
            this.bytes[4 * at + 12] = angle;
            this.bytes[4 * at + 13] = bits;
        }
        memory() {
            return this.bytes.subarray(0, this.size * BYTES_A_CORNER);
        }
    }

    /** Whether a triangle's box meets the canvas, in a view that isn't turned. */
    function mayBeSeen(mesh, view, i) {
        const { corners } = mesh, meets = (k, reach) => {
            const a = mesh.place(corners[3 * i], k), b = mesh.place(corners[3 * i + 1], k), c = mesh.place(corners[3 * i + 2], k);
            return Math.max(a, b, c) - view.target[k] >= -reach && Math.min(a, b, c) - view.target[k] <= reach;
        };
        return meets(0, view.width / 2 / view.scale) && meets(1, view.height / 2 / view.scale);
    }

    /** The part of a polygon within the canvas, and so far around that the cuts aren't seen. All in pixels from the middle. */
    function cutToView(points, view) {
        const around = 8;
        for (const axis of [0, 1])
            for (const sign of [1, -1]) {
                const reach = (axis === 0 ? view.width : view.height) / 2 + around, part = [];
                let p = points[points.length - 1];
                for (const q of points) {
                    const atP = reach - sign * p[axis], atQ = reach - sign * q[axis], t = atP / (atP - atQ);
                    if (atP < 0 !== atQ < 0) part.push([p[0] + (q[0] - p[0]) * t, p[1] + (q[1] - p[1]) * t]);
                    if (atQ >= 0) part.push(q);
                    p = q;
                }
                points = part;
            }
        return points;
    }

    // ---- Drawing without WebGL

    const toCss = (rgb) => `rgb(${rgb.map((c) => Math.round(255 * c)).join(",")})`;
    const toPixel = (rgb) => rgb.reduceRight((sum, c) => sum << 8 | Math.round(255 * c), 255) >>> 0;

    /** Draws in slices; a view that changes meanwhile begins anew. What lies behind isn't hidden. */
    class CanvasRenderer {
        constructor(canvas) {
            this.canvas = canvas;
            this.context = canvas.getContext("2d");
            this.name = "canvas";
            this.mesh = null;
            this.drawing = 0;
        }

        async setMesh(mesh) {
            this.mesh = mesh;
        }

        draw(view, look, pixelRatio) {
            const drawing = ++this.drawing;
            this.context.setTransform(pixelRatio, 0, 0, pixelRatio, 0, 0);
            this.context.clearRect(0, 0, view.width, view.height);
            this.context.lineWidth = 1;
            this.context.lineJoin = "round";
            if (this.mesh === null) return;
            // One colour, or those of eighths of the angles.
            const colors = look.byAngle ? Array.from({ length: 32 }, (_, i) => rgbOfAngle(8 * i)) : [rgbOf(look.fillColor)];
            const triangles = this.drawDots(view, look, colors, pixelRatio), styles = colors.map(toCss);
            // Where triangles are hardly larger than pixels edges fade.
            const size = Math.sqrt(4 * view.scale * view.scale / this.mesh.numTriangles);
            const edgeAlpha = look.edges ? Math.max(0, Math.min(1, (size - 1) / 10)) : 0;
            let next = 0;
            const drawSlice = () => {
                const end = performance.now() + LONG_SLICE_MS;
                for (; next < triangles.length && performance.now() < end; next += 500)
                    this.drawTriangles(triangles.slice(next, next + 500), view, look, styles, edgeAlpha);
                if (next < triangles.length)
                    requestAnimationFrame(() => drawing === this.drawing && drawSlice());
                else if (look.picked >= 0)
                    this.drawTriangles([look.picked], view, Object.assign({}, look, { filling: true }), [look.pickColor], 1);
            };
            drawSlice();
        }

        /** Triangles of hardly a pixel are dots of a picture that is made at once. Gives the others that may be seen. */
        drawDots(view, look, colors, pixelRatio) {
            const { width, height } = this.canvas, { corners, coordinates, center, half, angles } = this.mesh;
            const image = this.context.createImageData(width, height), pixels = new Uint32Array(image.data.buffer);
            const dots = look.filling ? colors.map(toPixel) : [toPixel(rgbOf(look.edgeColor))];
            const [[rx, ry, rz], [ux, uy, uz]] = view.rows, [tx, ty, tz] = view.target, scale = view.scale * pixelRatio;
            const x = new Float64Array(3), y = new Float64Array(3), others = [];
            for (let i = 0; i < angles.length; ++i) {
                for (let k = 0; k < 3; ++k) {
                    const at = 3 * corners[3 * i + k], dx = (coordinates[at] - center[0]) / half - tx;
                    const dy = (coordinates[at + 1] - center[1]) / half - ty, dz = (coordinates[at + 2] - center[2]) / half - tz;
                    x[k] = width / 2 + scale * (rx * dx + ry * dy + rz * dz);
                    y[k] = height / 2 - scale * (ux * dx + uy * dy + uz * dz);
                }
                const left = Math.min(x[0], x[1], x[2]), right = Math.max(x[0], x[1], x[2]);
                const top = Math.min(y[0], y[1], y[2]), bottom = Math.max(y[0], y[1], y[2]);
                if (right < 0 || left >= width || bottom < 0 || top >= height) continue;
                if (right - left > 1.5 || bottom - top > 1.5) {
                    others.push(i);
                    continue;
                }
                // Two by two, so that there are no holes.
                const column = Math.min(width - 2, Math.max(0, Math.floor(left)));
                const first = Math.max(0, Math.floor(top)) * width + column;
                const dot = dots.length === 1 ? dots[0] : dots[angles[i] >> 3];
                pixels[first] = pixels[first + 1] = pixels[first + width] = pixels[first + width + 1] = dot;
            }
            this.context.putImageData(image, 0, 0);
            return others;
        }

        drawTriangles(triangles, view, look, styles, edgeAlpha) {
            const context = this.context, { mesh } = this, far = 4 * Math.max(view.width, view.height);
            let style = "";
            const flush = () => {
                context.globalAlpha = 1;
                context.fillStyle = context.strokeStyle = style;
                if (look.filling) context.fill();
                if (look.filling && edgeAlpha < 1) context.stroke();  // or the ground would shine through between neighbours
                context.globalAlpha = edgeAlpha;
                context.strokeStyle = look.edgeColor;
                if (edgeAlpha > 0) context.stroke();
            };
            context.beginPath();
            for (const i of triangles) {
                let points = [0, 1, 2].map((k) => view.pixelOf(mesh, mesh.corners[3 * i + k]));
                // The canvas counts in floats: what reaches far is cut before.
                if (points.some(([x, y]) => Math.abs(x) > far || Math.abs(y) > far)) points = cutToView(points, view);
                const own = styles.length === 1 ? styles[0] : styles[mesh.angles[i] >> 3];
                if (own !== style) {
                    flush();
                    style = own;
                    context.beginPath();
                }
                points.forEach(([x, y], k) => {
                    if (k === 0) context.moveTo(view.width / 2 + x, view.height / 2 - y);
                    else context.lineTo(view.width / 2 + x, view.height / 2 - y);
                });
                context.closePath();
            }
            flush();
        }
    }

    // ---- The viewer

    const DEFAULTS = {
        SceneUrl: "",
        ShowEdges: true,
        ShowFilling: true,
        ColorByAngle: false,
        DragTurns: false,
        FillColor: "#d7e4ee",
        EdgeColor: "#2f4a63",
        PickColor: "#f2a900",
        Renderer: "",
    };

    /** Formats that scene pages know by name but that aren't read here, with what to say. */
    const unsupported = new Map();

    class Viewer {
        constructor(canvas) {
            this.canvas = canvas;
            this.parameters = new Map(Object.entries(DEFAULTS));
            this.view = new View();
            this.mesh = null;
            this.picked = -1;
            this.job = null;
            this.renderer = null;
            this.frame = 0;
            for (const name of ["onprogress", "onload", "onfail", "onhover", "onpick"]) this[name] = () => {};
        }

        setParameter(name, value) {
            this.parameters.set(name, value);
        }

        getParameter(name) {
            return this.parameters.get(name);
        }

        init() {
            this.renderer = this.makeRenderer();
            this.canvas.addEventListener("webglcontextlost", (event) => event.preventDefault());
            this.canvas.addEventListener("webglcontextrestored", async () => {
                this.renderer.prepare();
                if (this.mesh !== null) await this.renderer.setMesh(this.mesh, null);
                this.update();
            });
            this.listen();
            new ResizeObserver(() => this.resize()).observe(this.canvas);
            this.resize();
            const url = this.getParameter("SceneUrl");
            if (url) this.replaceSceneFromUrl(url);
        }

        makeRenderer() {
            try {
                const gl = this.getParameter("Renderer") === "2d" ? null : GlRenderer.create(this.canvas);
                if (gl !== null) return gl;
            } catch (problem) {
                // A canvas that was once given to WebGL can't be drawn otherwise.
                const fresh = this.canvas.cloneNode();
                this.canvas.replaceWith(fresh);
                this.canvas = fresh;
            }
            return new CanvasRenderer(this.canvas);
        }

        update() {
            if (this.renderer === null || this.frame !== 0) return;
            this.frame = requestAnimationFrame(() => {
                this.frame = 0;
                const get = (name) => this.getParameter(name);
                const look = {
                    edges: get("ShowEdges"), filling: get("ShowFilling"), byAngle: get("ColorByAngle"),
                    fillColor: get("FillColor"), edgeColor: get("EdgeColor"), pickColor: get("PickColor"),
                    picked: this.picked,
                };
                this.renderer.draw(this.view, look, this.canvas.width / this.view.width);
            });
        }

        /** What is in the middle stays there. */
        resize() {
            const { clientWidth, clientHeight } = this.canvas, ratio = window.devicePixelRatio || 1;
            if (clientWidth === 0 || clientHeight === 0) return;
            const wasEmpty = this.view.width === 1;
            this.canvas.width = Math.round(clientWidth * ratio);
            this.canvas.height = Math.round(clientHeight * ratio);
            this.view.width = clientWidth;
            this.view.height = clientHeight;
            if (wasEmpty) this.view.fit(this.mesh);
            this.update();
        }

        fit() {
            this.view.fit(this.mesh);
            this.update();
        }

        replaceSceneFromUrl(url) {
            return this.replaceScene(url, (job) => fetchBytes(url, job));
        }

        replaceSceneFromFile(file) {
            return this.replaceScene(file.name, async () => new Uint8Array(await file.arrayBuffer()));
        }

        /** Failures are told to onfail: kind "unreachable", "missing" or "content". */
        async replaceScene(name, getBytes) {
            const job = this.job = new Job(this);
            try {
                const extension = name.split(/[?#]/)[0].split(".").pop().toLowerCase();
                if (unsupported.has(extension)) throw new Failure("content", unsupported.get(extension));
                job.tell(0, "Loading");
                const reader = new ObjReader(await getBytes(job));
                await reader.read(job);
                if (reader.corners.size === 0) throw new Failure("content", reasonForNothing(reader));
                const mesh = new Mesh(reader);
                await mesh.measure(job);
                await this.renderer.setMesh(mesh, job);
                job.tell(1, "");
                this.mesh = mesh;
                this.pick(-1);
                this.fit();
                this.onload(mesh);
            } catch (problem) {
                if (!(problem instanceof Abandoned)) this.onfail(problem.kind || "content", problem.message);
            }
        }

        pick(triangle) {
            this.picked = triangle;
            this.onpick(triangle < 0 ? null : this.mesh.describe(triangle));
            this.update();
        }

        pickAt(x, y) {
            if (this.mesh !== null) this.pick(this.view.triangleUnder(this.mesh, x, y));
        }

        /** Where the pointer is, in the coordinates of the file, and how far two pixels are apart. */
        hoverAt(x, y) {
            if (this.mesh === null) return;
            const place = this.view.placeUnder(x, y), { center, half } = this.mesh;
            this.onhover(place === null ? null : {
                x: center[0] + half * place[0], y: center[1] + half * place[1], pixel: half / this.view.scale,
            });
        }

        // Gestures; fingers are the affair of jsc3d.touch.js

        pan(dx, dy) {
            this.view.pan(dx, dy);
            this.update();
        }

        zoom(factor, x = this.view.width / 2, y = this.view.height / 2) {
            this.view.zoom(factor, x, y);
            this.update();
        }

        turn(dx, dy) {
            this.view.turn(dx * 0.01, dy * 0.01);
            this.update();
        }

        drag(dx, dy, turns) {
            if (turns || this.getParameter("DragTurns")) this.turn(dx, dy);
            else this.pan(dx, dy);
        }

        listen() {
            const canvas = this.canvas;
            let last = null, hasMoved = false;
            const listen = (name, handle) => canvas.addEventListener(name, (event) => {
                if (event.pointerType !== "touch") handle(event);
            });
            listen("pointerdown", (event) => {
                canvas.setPointerCapture(event.pointerId);
                last = event;
                hasMoved = false;
            });
            listen("pointermove", (event) => {
                this.hoverAt(event.offsetX, event.offsetY);
                if (last === null) return;
                const dx = event.offsetX - last.offsetX, dy = event.offsetY - last.offsetY;
                if (!hasMoved && Math.hypot(dx, dy) < 4) return;
                hasMoved = true;
                this.drag(dx, dy, event.shiftKey || (event.buttons & 2) !== 0);
                last = event;
            });
            listen("pointerup", (event) => {
                if (last !== null && !hasMoved && event.button === 0) this.pickAt(event.offsetX, event.offsetY);
                last = null;
            });
            listen("pointercancel", () => last = null);
            listen("pointerleave", () => this.onhover(null));
            listen("dblclick", () => this.fit());
            listen("contextmenu", (event) => event.preventDefault());
            canvas.addEventListener("wheel", (event) => {
                event.preventDefault();
                const pixels = event.deltaY * (event.deltaMode === 1 ? 30 : event.deltaMode === 2 ? 300 : 1);
                this.zoom(Math.exp(-pixels * (event.ctrlKey ? 0.01 : 0.0015)), event.offsetX, event.offsetY);
                this.hoverAt(event.offsetX, event.offsetY);
            }, { passive: false });
            if (JSC3D.attachTouch) JSC3D.attachTouch(this);
        }
    }

    class Failure extends Error {
        constructor(kind, text) {
            super(text);
            this.kind = kind;
        }
    }

    async function fetchBytes(url, job) {
        let response = null;
        try {
            response = await fetch(url, { cache: "no-cache" });
        } catch (problem) {
            throw new Failure("unreachable", `${url} can't be loaded.`);
        }
        if (!response.ok) throw new Failure("missing", `${url} isn't there (the server says ${response.status}).`);
        const length = Number(response.headers.get("Content-Length")), parts = [], reader = response.body.getReader();
        let size = 0;
        for (let part = await reader.read(); !part.done; part = await reader.read()) {
            parts.push(part.value);
            size += part.value.length;
            job.tell(length > 0 ? Math.min(1, size / length) : 0, "Loading");
        }
        const bytes = new Uint8Array(size);
        let at = 0;
        for (const part of parts) {
            bytes.set(part, at);
            at += part.length;
        }
        return bytes;
    }

    function reasonForNothing(reader) {
        if (reader.bytes.length === 0) return "The file is empty.";
        if (reader.numBad > 0) return `The file holds no triangle that can be drawn; ${reader.reason}.`;
        if (reader.coordinates.size === 0) return "The file holds no vertices: is it a Wavefront OBJ file?";
        return "The file holds vertices, but no triangles.";
    }

    return { Viewer, unsupported, angleColors: ANGLE_COLORS, attachTouch: null };
})();
