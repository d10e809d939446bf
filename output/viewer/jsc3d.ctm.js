"use strict";
// Reads the mesh. A page opened from disk may not read a file beside it, but it may run one, so the mesh comes as
// the script 3d.js:
//     Kivo.mesh.begin({title, zone, vertices, triangles, borderEdges, constraintEdges});
//     Kivo.mesh.add("corners", "base64");   repeated for each array, in order
//     Kivo.mesh.end();
// Numbers are little-endian, as in the typed arrays of every machine that has a browser.

window.Kivo = window.Kivo || {};

(() => {
    const digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const valueOfDigit = new Uint8Array(128).fill(255);
    for (let i = 0; i < 64; i++) valueOfDigit[digits.charCodeAt(i)] = i;

    // Writes the bytes of a base64 text and returns the place behind them.
    function decode(text, bytes, offset) {
        const valueAt = i => {
            const code = text.charCodeAt(i);
            return code < 128 ? valueOfDigit[code] : 255;
        };
        let length = text.length;
        while (length > 0 && text[length - 1] === "=") length--;
        const numBytes = Math.floor(length * 3 / 4);
        if (offset + numBytes > bytes.length) throw new Error("an array is longer than announced");
        const wholeEnd = length - length % 4;
        let bad = 0;
        for (let i = 0; i < wholeEnd; i += 4) {
            const a = valueAt(i), b = valueAt(i + 1), c = valueAt(i + 2), d = valueAt(i + 3);
            bad |= a | b | c | d;
            bytes[offset++] = a << 2 | b >> 4;
            bytes[offset++] = b << 4 | c >> 2;
            bytes[offset++] = c << 6 | d;
        }
        if (length > wholeEnd + 1) {
            const a = valueAt(wholeEnd), b = valueAt(wholeEnd + 1), c = length > wholeEnd + 2 ? valueAt(wholeEnd + 2) : 0;
            bad |= a | b | c;
            bytes[offset++] = a << 2 | b >> 4;
            if (length > wholeEnd + 2) bytes[offset++] = b << 4 | c >> 2;
        }
        if (bad > 63) throw new Error("an array holds characters that are no base64");
        return offset;
    }

    // Centre and half the larger extent; half the box and the step from one double to the next where these are largest,
    // both in units of the latter. Written so that coordinates near the ends of the doubles work too.
    function frameOf(coordinates) {
        let minX = Infinity, minY = Infinity, maxX = -Infinity, maxY = -Infinity;
        for (let i = 0; i < coordinates.length; i += 2) {
            const x = coordinates[i], y = coordinates[i + 1];
            if (!Number.isFinite(x) || !Number.isFinite(y)) throw new Error("a coordinate is no number");
            if (x < minX) minX = x;
            if (x > maxX) maxX = x;
            if (y < minY) minY = y;
            if (y > maxY) maxY = y;
        }
        const halfWidth = maxX / 2 - minX / 2, halfHeight = maxY / 2 - minY / 2;
        const scale = Math.max(halfWidth, halfHeight) || Number.MIN_VALUE;
        return {
            centerX: minX + halfWidth, centerY: minY + halfHeight, scale,
            halfWidth: halfWidth / scale, halfHeight: halfHeight / scale,
            step: Math.max(-minX, maxX, -minY, maxY) / scale * Number.EPSILON,
        };
    }

    // x and y relative to the centre, in units of the scale, each as the sum of two floats: the first alone would
    // leave steps that show when zoomed in. Order: high x, high y, low x, low y.
    function splitPositions(coordinates, frame) {
        const positions = new Float32Array(coordinates.length * 2);
        for (let i = 0; i < coordinates.length; i += 2) {
            const x = (coordinates[i] - frame.centerX) / frame.scale;
            const y = (coordinates[i + 1] - frame.centerY) / frame.scale;
            const highX = Math.fround(x), highY = Math.fround(y);
            positions[2 * i] = highX;
            positions[2 * i + 1] = highY;
            positions[2 * i + 2] = x - highX;
            positions[2 * i + 3] = y - highY;
        }
        return positions;
    }

    class MeshReader {
        constructor() {
            this.result = null;
            this.problem = null;
            this.head = null;
            this.arrays = {};
            this.filled = {};
        }

        begin(head) {
            this.attempt(() => {
                for (const name of ["vertices", "triangles", "borderEdges", "constraintEdges"]) {
                    if (!Number.isSafeInteger(head[name]) || head[name] < 0) throw new Error("it lacks the number of " + name);
                }
                this.head = head;
                this.arrays = {
                    coordinates: new Float64Array(2 * head.vertices),
                    corners: new Uint32Array(3 * head.triangles),
                    borderEdges: new Uint32Array(2 * head.borderEdges),
                    constraintEdges: new Uint32Array(2 * head.constraintEdges),
                };
                for (const name of Object.keys(this.arrays)) this.filled[name] = 0;
            });
        }

        add(name, base64) {
            this.attempt(() => {
                const array = this.arrays[name];
                if (!array) throw new Error("it holds an unknown array");
                this.filled[name] = decode(base64, new Uint8Array(array.buffer), this.filled[name]);
            });
        }

        end() {
            this.attempt(() => {
                const { coordinates, corners, borderEdges, constraintEdges } = this.arrays;
                for (const [name, array] of Object.entries(this.arrays)) {
                    if (this.filled[name] !== array.byteLength) throw new Error("an array is shorter than announced");
                    if (name !== "coordinates") this.checkVertices(array);
                }
                const frame = frameOf(coordinates);
                const positions = splitPositions(coordinates, frame);
                const { title, zone, ...counts } = this.head;
                this.result = { title, zone, counts, frame, positions, corners, borderEdges, constraintEdges };
            });
            this.arrays = {};
        }

        checkVertices(array) {
            const numVertices = this.head.vertices;
            for (let i = 0; i < array.length; i++) {
                if (array[i] >= numVertices) throw new Error("it names a vertex that is not there");
            }
        }

        // The first failure is what the page tells; what follows it is no better.
        attempt(step) {
            if (this.problem) return;
            try {
                step();
            } catch (error) {
                this.problem = error.message;
            }
        }
    }

    // Runs the mesh script. The promise fails with a text for the reader of the page.
    Kivo.loadMesh = url => new Promise((resolve, reject) => {
        const reader = Kivo.mesh = new MeshReader();
        const script = document.createElement("script");
        const done = settle => {
            Kivo.mesh = null;
            script.remove();
            settle();
        };
        script.onerror = () => done(() => reject(new Error(
            `There is no file ${url} beside this page. It holds the mesh; copy the whole folder.`)));
        script.onload = () => done(() => {
            if (reader.result) resolve(reader.result);
            else reject(new Error(`The file ${url} is damaged: ${reader.problem || "it is incomplete"}.`));
        });
        script.src = url;
        document.body.append(script);
    });
})();
