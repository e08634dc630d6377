// The page of a web scene, in a headless browser: what is seen is judged by the pixels of screenshots.
"use strict";

const assert = require("node:assert");
const fs = require("node:fs");
const http = require("node:http");
const path = require("node:path");
const { test, before, after } = require("node:test");
const { pathToFileURL } = require("node:url");
const { chromium } = require("playwright-core");

const { NORVIK2D_SCENES: scenes, NORVIK2D_SCREENSHOTS: screenshots, NORVIK2D_CHROMIUM: executablePath } = process.env;
const TYPES = { ".html": "text/html", ".js": "text/javascript", ".obj": "text/plain" };
const LOAD_MS = 300000;

let server = null, browser = null, decoder = null;

function launch(...more) {
    const args = ["--use-angle=swiftshader", "--enable-unsafe-swiftshader", "--ignore-gpu-blocklist", ...more];
    if (process.getuid() === 0) args.push("--no-sandbox");
    return chromium.launch({ executablePath, args });
}

before(async () => {
    server = http.createServer((request, response) => {
        const file = path.join(scenes, path.normalize(request.url.replace(/\/$/, "/index.html")));
        if (!fs.existsSync(file)) return response.writeHead(404).end();
        response.writeHead(200, { "Content-Type": TYPES[path.extname(file)], "Content-Length": fs.statSync(file).size });
        fs.createReadStream(file).pipe(response);
    });
    await new Promise((resolve) => server.listen(0, "127.0.0.1", resolve));
    browser = await launch();
    decoder = await browser.newPage();
});

after(async () => {
    await browser.close();
    server.close();
});

const served = (scene) => `http://127.0.0.1:${server.address().port}/${scene}/`;

/** Waits until what was asked for is loaded, or refused. */
async function settled(page) {
    await page.waitForFunction(() => document.body.dataset.state !== "loading", null, { timeout: LOAD_MS });
    return page.evaluate(() => document.body.dataset.state);
}

async function open(url, { inBrowser = browser, options = {} } = {}) {
    const page = await inBrowser.newPage({ viewport: { width: 900, height: 650 }, ...options });
    page.problems = [];
    page.on("pageerror", (problem) => page.problems.push(problem.message));
    await page.goto(url);
    await settled(page);
    return page;
}

/** The canvas as it is seen: for each pixel the letter of what it shows, and the box of all that isn't ground. */
async function look(page, name) {
    await page.mouse.move(2, 2);  // away from the canvas: no coordinates are shown
    await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
    const box = await page.locator("canvas").boundingBox();
    const png = await page.screenshot({ clip: box, path: name && path.join(screenshots, `${name}.png`) });
    return decoder.evaluate(async (url) => {
        const image = new Image();
        image.src = url;
        await image.decode();
        const { width, height } = image, canvas = new OffscreenCanvas(width, height), context = canvas.getContext("2d");
        context.drawImage(image, 0, 0);
        const { data } = context.getImageData(0, 0, width, height), kinds = [];
        const near = (at, [r, g, b]) => Math.max(Math.abs(data[at] - r), Math.abs(data[at + 1] - g), Math.abs(data[at + 2] - b)) < 8;
        const known = { ground: [251, 251, 249], fill: [217, 230, 239], edge: [47, 74, 99] };
        const seen = { width, height, left: width, top: height, right: -1, bottom: -1, fill: 0, edge: 0, other: 0 };
        for (let i = 0; i < width * height; ++i) {
            const kind = Object.keys(known).find((name) => near(4 * i, known[name])) || "other";
            kinds.push(kind[0]);
            if (kind === "ground") continue;
            ++seen[kind];
            const x = i % width, y = (i - x) / width;
            seen.left = Math.min(seen.left, x);
            seen.right = Math.max(seen.right, x);
            seen.top = Math.min(seen.top, y);
            seen.bottom = Math.max(seen.bottom, y);
        }
        return Object.assign(seen, { kinds: kinds.join("") });
    }, `data:image/png;base64,${png.toString("base64")}`);
}

function expectNear(value, expected, tolerance, what) {
    assert.ok(Math.abs(value - expected) <= tolerance, `${what}: ${value}, expected ${expected}`);
}

function expectBox(seen, [left, top, right, bottom]) {
    expectNear(seen.left, left, 2, "left");
    expectNear(seen.top, top, 2, "top");
    expectNear(seen.right, right, 2, "right");
    expectNear(seen.bottom, bottom, 2, "bottom");
}

const boxOf = ({ left, top, right, bottom }) => [left, top, right, bottom];

/** The rectangle of 4 by 3, in the middle, filled, with edges. */
function expectRectangle(seen) {
    const width = seen.right - seen.left, height = seen.bottom - seen.top;
    assert.ok(width > 0.5 * seen.width, "it is large");
    expectNear(width / height, 4 / 3, 0.01, "shape");
    expectNear(seen.left + seen.right, seen.width, 4, "middle");
    expectNear(seen.top + seen.bottom, seen.height, 4, "middle");
    assert.ok(seen.fill > 0.9 * width * height, "it is filled");
    assert.ok(seen.edge > height, "it has edges");
}

/** A page position of a point of the rectangle. */
async function positionOf(page, seen, x, y) {
    const box = await page.locator("canvas").boundingBox(), scale = (seen.right - seen.left) / 4;
    return [box.x + seen.left + scale * x, box.y + seen.bottom - scale * y];
}

test("a served mesh is seen, panned, zoomed at the cursor, turned and fitted", async () => {
    const page = await open(served("rectangle"));
    assert.match(await page.textContent("h1"), /libnorvik2d/);
    assert.match(await page.textContent("#summary"), /^4 triangles · 5 vertices · smallest angle 18\.4°$/);
    assert.strictEqual(await page.evaluate(() => viewer.renderer.name), "WebGL");
    const first = await look(page, "rectangle"), [left, top, right, bottom] = boxOf(first);
    expectRectangle(first);

    const [x, y] = await positionOf(page, first, 0, 0);
    await page.mouse.move(x, y);
    await page.mouse.wheel(0, 400);
    const zoomed = await look(page), share = Math.exp(-0.6);
    expectBox(zoomed, [left, bottom - share * (bottom - top), left + share * (right - left), bottom]);

    await page.mouse.move(x, y);
    await page.mouse.down();
    await page.mouse.move(x + 90, y - 70, { steps: 5 });
    await page.mouse.up();
    expectBox(await look(page), [zoomed.left + 90, zoomed.top - 70, zoomed.right + 90, zoomed.bottom - 70]);

    await page.mouse.move(x, y);
    await page.keyboard.down("Shift");
    await page.mouse.down();
    await page.mouse.move(x, y + 100, { steps: 5 });
    await page.mouse.up();
    await page.keyboard.up("Shift");
    const turned = await look(page, "turned");
    expectNear((turned.bottom - turned.top) / (zoomed.bottom - zoomed.top), Math.cos(1), 0.03, "tilted by 1 rad");

    await page.mouse.dblclick(x + 60, y - 60);
    await page.keyboard.press("Escape");
    expectBox(await look(page), boxOf(first));
    assert.deepStrictEqual(page.problems, []);
    await page.close();
});

test("a click picks a triangle, and the page tells where the cursor is", async () => {
    const page = await open(served("rectangle")), seen = await look(page);
    const [x, y] = await positionOf(page, seen, 3, 1);
    await page.mouse.click(x, y);
    const [, atX, atY] = (await page.textContent("#where")).match(/x ([\d.]+)\s+y ([\d.]+)/).map(Number);
    expectNear(atX, 3, 0.02, "x");
    expectNear(atY, 1, 0.02, "y");

    // The right triangle of the four: between (4,0), (4,3) and the vertex inside.
    const told = await page.textContent("#triangle");
    assert.match(told, /^Triangle [1-4]/);
    assert.match(told, /area4\.50000/);
    const lines = fs.readFileSync(path.join(scenes, "rectangle/3d.obj"), "utf8").split("\n");
    const rows = await page.locator("#triangle tr").allTextContents(), corners = rows.slice(0, 3).sort();
    const number = (point) => lines.indexOf(`v ${point} 0 `) + 1;
    const expected = ["1 1", "4 0", "4 3"].map((point) => `vertex ${number(point)}${point.replace(" ", "")}`);
    assert.deepStrictEqual(corners, expected.sort());
    const picked = await look(page, "picked");
    expectNear(picked.other / (seen.fill + seen.edge), 4.5 / 12, 0.04, "the share that is picked");

    await page.keyboard.press("Escape");
    assert.strictEqual(await page.isVisible("#triangle"), false);
    await page.click("[data-toggle=ShowEdges]");
    assert.ok((await look(page)).edge === 0, "no edges");
    await page.click("[data-toggle=ColorByAngle]");
    const coloured = await look(page, "angles");
    assert.ok(coloured.fill < 0.01 * seen.fill && coloured.other > 0.9 * seen.fill, "other colours");
    assert.ok(await page.isVisible("#legend"));
    await page.click("[data-toggle=ColorByAngle]");
    await page.click("[data-toggle=ShowEdges]");
    await page.click("[data-toggle=ShowFilling]");
    const wires = await look(page);
    assert.ok(wires.fill === 0 && wires.edge > 0.5 * seen.edge, "nothing but edges");
    await page.close();
});

test("without WebGL the mesh is drawn all the same", async () => {
    const plain = await launch("--disable-3d-apis");
    const page = await open(served("rectangle"), { inBrowser: plain });
    assert.strictEqual(await page.evaluate(() => viewer.renderer.name), "canvas");
    const seen = await look(page, "withoutWebGL");
    expectRectangle(seen);
    await page.mouse.click(...await positionOf(page, seen, 3, 1));
    assert.match(await page.textContent("#triangle"), /area4\.50000/);
    assert.ok((await look(page)).other > 0.3 * seen.fill, "the picked one has a colour of its own");
    await plain.close();
});

test("far from the origin a mesh looks as it does there, however near", async () => {
    const pages = [await open(served("rectangle")), await open(served("mapCoordinates"))];
    for (const factor of [1, 1e3, 1e2]) {
        const seen = [];
        for (const page of pages) {
            await page.evaluate((times) => {
                // near the vertex inside, which is 1 beside and 0.5 below the middle, with a half edge of 2
                viewer.view.target = [-0.5 + 1e-8, -0.25 + 1e-8, 0];
                viewer.zoom(times);
            }, factor);
            seen.push(await look(page));
        }
        const numOther = [...seen[0].kinds].filter((kind, i) => kind !== seen[1].kinds[i]).length;
        assert.ok(numOther < 0.001 * seen[0].kinds.length, `${numOther} pixels differ`);
        assert.ok(seen[0].edge + seen[0].other > 1000, "edges are seen");
    }
    for (const page of pages) await page.close();
});

test("fingers pan and pinch", async () => {
    const page = await open(served("rectangle"), { options: { hasTouch: true, viewport: { width: 400, height: 700 } } });
    const first = await look(page, "phone"), [x, y] = await positionOf(page, first, 2, 1.5);
    const touch = await page.context().newCDPSession(page);
    const fingers = (type, ...touchPoints) => touch.send("Input.dispatchTouchEvent", { type, touchPoints });
    await fingers("touchStart", { x: x - 50, y, id: 0 }, { x: x + 50, y, id: 1 });
    for (const spread of [45, 40, 35, 30, 25]) await fingers("touchMove", { x: x - spread, y, id: 0 }, { x: x + spread, y, id: 1 });
    await fingers("touchEnd");
    const pinched = await look(page);
    expectNear((pinched.right - pinched.left) / (first.right - first.left), 0.5, 0.02, "half as large");
    await fingers("touchStart", { x, y, id: 0 });
    for (const step of [20, 40, 60]) await fingers("touchMove", { x, y: y + step, id: 0 });
    await fingers("touchEnd");
    expectBox(await look(page), [pinched.left, pinched.top + 60, pinched.right, pinched.bottom + 60]);
    await page.touchscreen.tap(x, y + 60);
    assert.ok(await page.isVisible("#triangle"));
    await page.close();
});

test("opened from a file the page says why it is empty, and takes the mesh from a picker or dropped", async () => {
    const folder = path.join(scenes, "rectangle"), page = await open(pathToFileURL(path.join(folder, "index.html")).href);
    assert.match(await page.textContent("#told"), /opened from a file/);
    assert.strictEqual(await page.textContent("#command"), `python3 -m http.server --bind localhost --directory '${folder}'`);
    assert.ok(await page.isVisible("#server") && await page.isVisible("#drop"));
    await page.screenshot({ path: path.join(screenshots, "fromFile.png") });
    await page.setInputFiles("#file", path.join(folder, "3d.obj"));
    assert.strictEqual(await settled(page), "ready");
    assert.strictEqual(await page.isVisible("#message"), false);
    expectRectangle(await look(page));
    await page.evaluate(() => {
        const dataTransfer = new DataTransfer();
        dataTransfer.items.add(new File(["v 0 0\nv 1 0\nv 0 1\nf 1 2 3\n"], "dropped.obj"));
        document.body.dispatchEvent(new DragEvent("drop", { dataTransfer, bubbles: true, cancelable: true }));
    });
    await page.waitForFunction(() => document.querySelector("#summary").textContent.startsWith("1 triangle "));
    await page.close();
});

test("files of others are read as far as possible, and else the page says what is wrong", async () => {
    fs.mkdirSync(path.join(scenes, "noMesh"), { recursive: true });
    for (const name of fs.readdirSync(path.join(scenes, "rectangle")))
        if (name !== "3d.obj") fs.copyFileSync(path.join(scenes, "rectangle", name), path.join(scenes, "noMesh", name));
    const page = await open(served("noMesh"));
    assert.match(await page.textContent("#told"), /3d\.obj isn't there/);
    const square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
    const cases = [
        // a quad, texture and normal numbers, negative numbers, line ends of other systems, a face before its vertices
        [square + "f 1 2 3 4\n", /^2 triangles · 4 vertices · smallest angle 45\.0°$/],
        [`# from elsewhere\r\no it\r\n${square}vn 0 0 1\nusemtl m\nf 1//1 2//1 3//1\nf 1/1/1 3/1 4\nl 1 2`, /^2 triangles/],
        [square + "f -4 -3 -2\nf -4 -2 -1", /^2 triangles/],
        ["f 1 2 3\n" + square, /^1 triangle · 4/],
        ["v +1.5e2 .5 \t2\nv 1E+2 -5.e-1 0\nv 149.99999999999999999999999999999 0 0\nf 1 2 3", /^1 triangle/],
        ["v 1e-300 0\nv 0 1e-300\nv 0 0\nf 1 2 3", /smallest angle 45\.0°/],
        ["v 1e308 0\nv -1e308 0\nv 0 1e308\nf 1 2 3", /smallest angle 45\.0°/],
        [square + "f 1 2 3\nf 1 2 5\nf 1 2\nf 1 x 3", /^1 triangle .* 3 lines couldn't be used, the first: line 7: .* less than three/],
        ["v 0 oops\n" + square + "f 2 3 4\nf 1 2 3", /^1 triangle .* 1 line .* line 1: a vertex isn't made of numbers/],
        ["", /^The file is empty/],
        ["<html>not found</html>", /no vertices: is it a Wavefront OBJ file/],
        [square, /vertices, but no triangles/],
        [square + "f 1 2 99", /no triangle that can be drawn; line 5: a face names vertex 99 of 4/],
    ];
    for (const [text, expected] of cases) {
        await page.setInputFiles("#file", { name: "some.obj", mimeType: "text/plain", buffer: Buffer.from(text) });
        await page.waitForFunction(() => document.body.dataset.state !== "loading");
        const state = await settled(page);
        const told = await page.textContent(state === "ready" ? "#summary" : "#told");
        assert.match(told, expected, text);
        assert.ok(state === "ready" || await page.isVisible("#message"));
    }
    await page.setInputFiles("#file", { name: "some.CTM", mimeType: "", buffer: Buffer.from("OCTM") });
    assert.strictEqual(await settled(page), "failed");
    assert.match(await page.textContent("#told"), /OpenCTM files aren't supported/);
    await page.keyboard.press("Escape");
    assert.match(await page.textContent("#summary"), /^1 triangle/, "the last mesh is still there");
    assert.strictEqual(await page.isVisible("#message"), false);
    assert.deepStrictEqual(page.problems, []);
    await page.close();
});

test("a million triangles", async () => {
    const start = Date.now(), page = await open(served("million"));
    console.log(`a million triangles were loaded in ${Date.now() - start} ms`);
    assert.match(await page.textContent("#summary"), /^999,\d{3} triangles · 500,000 vertices/);
    const seen = await look(page, "million");
    expectNear(seen.right - seen.left, seen.bottom - seen.top, 4, "a square");
    assert.ok(seen.fill + seen.edge + seen.other > 0.98 * (seen.right - seen.left) * (seen.bottom - seen.top), "without holes");
    await page.mouse.click(450, 350);
    assert.match(await page.textContent("#triangle"), /^Triangle \d{1,3}(,\d{3})*/);
    await page.close();
});
