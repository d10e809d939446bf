"use strict";
// Moves the view: mouse, pen and fingers, wheel and trackpad, keyboard.

window.Kivo = window.Kivo || {};

(() => {
    const lineHeight = 16, pageHeight = 400;  // what a wheel means that counts lines or pages
    const keyStep = 60, keyFactor = 1.5;

    const middleOf = points => ({
        x: points.reduce((sum, point) => sum + point.x, 0) / points.length,
        y: points.reduce((sum, point) => sum + point.y, 0) / points.length,
    });
    const spanOf = points => points.length < 2 ? 0 : Math.hypot(points[0].x - points[1].x, points[0].y - points[1].y);

    // One pointer drags; two drag with their middle and zoom with their distance.
    function attachPointers(view, canvas, onPoint) {
        const down = new Map();
        const placeOf = event => {
            const box = canvas.getBoundingClientRect();
            return { x: event.clientX - box.left, y: event.clientY - box.top };
        };
        const release = event => {
            down.delete(event.pointerId);
            if (down.size === 0) canvas.classList.remove("dragging");
        };
        canvas.addEventListener("pointerdown", event => {
            if (event.pointerType === "mouse" && event.button > 1) return;
            canvas.setPointerCapture(event.pointerId);
            canvas.classList.add("dragging");
            if (down.size < 2) down.set(event.pointerId, placeOf(event));
            onPoint(placeOf(event));
        });
        canvas.addEventListener("pointermove", event => {
            const place = placeOf(event);
            onPoint(place);
            if (!down.has(event.pointerId)) return;
            const before = [...down.values()];
            down.set(event.pointerId, place);
            const after = [...down.values()];
            const from = middleOf(before), to = middleOf(after);
            view.panBy(to.x - from.x, to.y - from.y);
            if (spanOf(before) > 0 && spanOf(after) > 0) view.zoomAt(to.x, to.y, spanOf(after) / spanOf(before));
        });
        canvas.addEventListener("pointerup", release);
        canvas.addEventListener("pointercancel", release);
        canvas.addEventListener("lostpointercapture", release);
        canvas.addEventListener("pointerleave", () => onPoint(null));
        canvas.addEventListener("dblclick", event => {
            const place = placeOf(event);
            view.zoomAt(place.x, place.y, event.shiftKey ? 0.5 : 2);
        });
    }

    // A pinch on a trackpad arrives as a wheel with the control key, in small steps.
    function attachWheel(view, canvas) {
        canvas.addEventListener("wheel", event => {
            event.preventDefault();
            const box = canvas.getBoundingClientRect();
            const unit = [1, lineHeight, pageHeight][event.deltaMode] || 1;
            const steps = Math.max(-400, Math.min(400, event.deltaY * unit));
            const factor = Math.exp(-steps * (event.ctrlKey ? 0.01 : 0.002));
            view.zoomAt(event.clientX - box.left, event.clientY - box.top, factor);
        }, { passive: false });
    }

    // Keys work wherever the focus is, except where it needs them itself.
    function attachKeys(view, canvas, actions) {
        const zoom = factor => view.zoomAt(canvas.clientWidth / 2, canvas.clientHeight / 2, factor);
        const moves = {
            "ArrowLeft": () => view.panBy(keyStep, 0),
            "ArrowRight": () => view.panBy(-keyStep, 0),
            "ArrowUp": () => view.panBy(0, keyStep),
            "ArrowDown": () => view.panBy(0, -keyStep),
            "+": () => zoom(keyFactor),
            "=": () => zoom(keyFactor),
            "-": () => zoom(1 / keyFactor),
            "0": () => view.fit(),
            "Home": () => view.fit(),
            ...actions,
        };
        window.addEventListener("keydown", event => {
            if (event.ctrlKey || event.altKey || event.metaKey) return;
            const move = moves[event.key.length === 1 ? event.key.toLowerCase() : event.key];
            if (!move) return;
            event.preventDefault();
            move();
        });
    }

    // `onPoint` gets the place of the pointer, or null when it left; `actions` are further keys.
    Kivo.attachControls = (view, canvas, { onPoint, actions }) => {
        attachPointers(view, canvas, onPoint);
        attachWheel(view, canvas);
        attachKeys(view, canvas, actions);
    };
})();
