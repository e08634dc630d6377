// Fingers for the mesh viewer of libnorvik2d, the project's own code: one finger drags, two pinch and pan, a tap picks, a
// double tap fits. Pages that want it load it behind jsc3d.js.
"use strict";

JSC3D.attachTouch = (viewer) => {
    const DOUBLE_TAP_MS = 350, TAP_PIXELS = 8;
    const canvas = viewer.canvas, fingers = new Map();
    let isTap = false, lastTap = -Infinity;

    canvas.style.touchAction = "none";  // the page shall not scroll

    const middle = () => {
        const all = Array.from(fingers.values()), n = all.length;
        const x = all.reduce((sum, finger) => sum + finger.x, 0) / n;
        const y = all.reduce((sum, finger) => sum + finger.y, 0) / n;
        const spread = all.reduce((sum, finger) => sum + Math.hypot(finger.x - x, finger.y - y), 0) / n;
        return { x, y, spread };
    };

    const listen = (name, handle) => canvas.addEventListener(name, (event) => {
        if (event.pointerType === "touch") handle(event);
    });

    listen("pointerdown", (event) => {
        event.preventDefault();
        canvas.setPointerCapture(event.pointerId);
        fingers.set(event.pointerId, { x: event.offsetX, y: event.offsetY });
        isTap = fingers.size === 1;
    });

    listen("pointermove", (event) => {
        if (!fingers.has(event.pointerId)) return;
        const last = fingers.get(event.pointerId);
        if (isTap && Math.hypot(event.offsetX - last.x, event.offsetY - last.y) < TAP_PIXELS) return;
        isTap = false;
        const before = middle();
        fingers.set(event.pointerId, { x: event.offsetX, y: event.offsetY });
        const after = middle();
        if (fingers.size === 1) return viewer.drag(after.x - before.x, after.y - before.y, false);
        viewer.pan(after.x - before.x, after.y - before.y);
        if (before.spread > 0 && after.spread > 0) viewer.zoom(after.spread / before.spread, after.x, after.y);
    });

    listen("pointerup", (event) => {
        fingers.delete(event.pointerId);
        if (!isTap) return;
        isTap = false;
        if (event.timeStamp - lastTap < DOUBLE_TAP_MS) return viewer.fit();
        lastTap = event.timeStamp;
        viewer.pickAt(event.offsetX, event.offsetY);
        viewer.hoverAt(event.offsetX, event.offsetY);
    });

    listen("pointercancel", (event) => {
        fingers.delete(event.pointerId);
        isTap = false;
    });
};
