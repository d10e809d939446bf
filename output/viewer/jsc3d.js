"use strict";
// Draws the mesh with WebGL 2. Each layer is one draw call, and none of the work of a frame outside the graphics
// device grows with the mesh.
//
// Positions and corner numbers lie in textures, so that a vertex of a triangle can look up the other two: its edges
// are then drawn with the triangle, smooth, of equal width at every zoom, and fainter where triangles are small.

window.Kivo = window.Kivo || {};

(() => {
    // Relative to the view's centre, in device pixels, y up. The difference of the high parts is exact for whatever
    // is near the view.
    const common = (shift) => `#version 300 es
        precision highp float;
        precision highp int;
        precision highp sampler2D;
        precision highp usampler2D;
        uniform sampler2D positions;
        uniform vec4 center;    // high x, high y, low x, low y
        uniform float scale;    // pixels per unit
        uniform vec2 halfSize;  // of the canvas
        uniform float ratio;    // device pixels per CSS pixel
        uniform float one;      // 1, but no compiler knows
        const float far = 16384.0;  // pixels; rasterizers lose precision beyond
        ivec2 texelOf(int number) { return ivec2(number & ${(1 << shift) - 1}, number >> ${shift}); }
        vec4 positionOf(uint vertex) { return texelFetch(positions, texelOf(int(vertex)), 0); }
        vec2 pixelOf(vec4 p) { return ((p.xy - center.xy) + (p.zw - center.zw)) * scale; }

        // Numbers as the sum of a high and a low part, after Dekker. The factor keeps compilers from simplifying what
        // would be zero without rounding.
        vec2 sum(float a, float b) {
            float s = a + b, t = s * one - a;
            return vec2(s, (a - (s - t)) + (b - t));
        }
        vec2 halves(float a) {
            float t = 4097.0 * a, high = t * one - (t - a);
            return vec2(high, a - high);
        }
        vec2 add(vec2 a, vec2 b) {
            vec2 s = sum(a.x, b.x);
            return sum(s.x, s.y + (a.y + b.y));
        }
        vec2 multiply(vec2 a, vec2 b) {
            float p = a.x * b.x;
            vec2 u = halves(a.x), v = halves(b.x);
            float rest = ((u.x * v.x - p * one) + u.x * v.y + u.y * v.x) + u.y * v.y;
            return sum(p, rest + (a.x * b.y + a.y * b.x));
        }
        // Normal and offset of the line from p to q, in pixels, positive to its left: right to a fraction of a pixel
        // however far the two are.
        vec3 lineThrough(vec4 p, vec4 q) {
            vec2 x = add(p.xz, -center.xz), y = add(p.yw, -center.yw);
            vec2 dx = add(q.xz, -p.xz), dy = add(q.yw, -p.yw);
            vec2 turn = add(multiply(dy, x), -multiply(dx, y));
            return vec3(-dy.x, dx.x, turn.x * scale) * inversesqrt(max(dx.x * dx.x + dy.x * dy.x, 1e-30));
        }
        bool isFar(vec2 low, vec2 high) { return any(greaterThan(max(-low, high), vec2(far))); }
    `;

    // A triangle that reaches far beyond the view is replaced by one that just covers the view: its own edges cut
    // off what is outside.
    const triangleVertexShader = `
        uniform usampler2D corners;
        flat out vec3 lines[3];       // normals and offsets of the edges; distances are positive inside
        flat out float size, extent;  // root of the area, longest edge; in CSS pixels
        vec3 roughLine(vec2 a, vec2 b) {
            vec2 along = b - a;
            vec2 normal = vec2(-along.y, along.x) * inversesqrt(max(dot(along, along), 1e-30));
            return vec3(normal, -dot(normal, a));
        }
        float largest(vec3 line) { return line.z + dot(abs(line.xy), halfSize); }
        bool isVisible(float tolerance) {
            return min(largest(lines[0]), min(largest(lines[1]), largest(lines[2]))) > -tolerance;
        }
        void main() {
            uvec3 c = texelFetch(corners, texelOf(gl_VertexID / 3), 0).xyz;
            int corner = gl_VertexID % 3;
            vec4 c0 = positionOf(c.x), c1 = positionOf(c.y), c2 = positionOf(c.z);
            vec2 p0 = pixelOf(c0), p1 = pixelOf(c1), p2 = pixelOf(c2);
            lines[0] = roughLine(p1, p2);
            lines[1] = roughLine(p2, p0);
            lines[2] = roughLine(p0, p1);
            vec2 u = p1 - p0, v = p2 - p0;
            size = sqrt(0.5 * abs(u.x * v.y - u.y * v.x)) / ratio;
            extent = max(length(u), max(length(v), length(u - v))) / ratio;
            vec2 position = (corner == 0 ? p0 : corner == 1 ? p1 : p2) / halfSize;
            vec2 low = min(p0, min(p1, p2)), high = max(p0, max(p1, p2));
            if (isFar(low, high)) {
                vec2 reach = max(abs(low), abs(high));
                bool visible = isVisible(1.0 + 1e-6 * (reach.x + reach.y));
                if (visible) {
                    lines[0] = lineThrough(c1, c2);
                    lines[1] = lineThrough(c2, c0);
                    lines[2] = lineThrough(c0, c1);
                    visible = isVisible(1.0);
                }
                position = visible ? vec2(corner == 1 ? 3.0 : -1.0, corner == 2 ? 3.0 : -1.0) : vec2(2.0);
            }
            gl_Position = vec4(position, 0.0, 1.0);
        }`;

    // Edges of triangles smaller than a pixel would be noise. A shade takes their place, a little darker where the
    // triangles are smaller.
    const triangleFragmentShader = `
        uniform vec4 fillColor, edgeColor;
        flat in vec3 lines[3];
        flat in float size, extent;
        out vec4 color;
        void main() {
            vec3 pixel = vec3(gl_FragCoord.xy - halfSize, 1.0);
            float nearest = min(dot(lines[0], pixel), min(dot(lines[1], pixel), dot(lines[2], pixel)));
            if (nearest < -1.0) discard;
            float line = clamp(0.5 * ratio + 0.5 - abs(nearest), 0.0, 1.0);
            float strength = mix(0.4, 1.0, smoothstep(3.0, 24.0, sqrt(size * extent)));
            float mean = 0.24 + 0.03 * clamp(-log2(size), 0.0, 8.0);
            float shade = mix(mean, line * strength, smoothstep(0.6, 3.0, size));
            color = mix(fillColor, vec4(edgeColor.rgb, 1.0), shade * edgeColor.a);
        }`;

    // A segment is a capsule: a quad around it, and the distance to it decides.
    const segmentVertexShader = `
        in uvec2 ends;
        uniform float halfWidth;
        flat out vec4 segment;
        flat out float reach;  // half the width: chains of segments shorter than a few pixels are drawn finer
        void main() {
            vec4 source = positionOf(ends.x), target = positionOf(ends.y);
            vec2 a = pixelOf(source), b = pixelOf(target), d = b - a;
            float extent = length(d);
            reach = halfWidth * mix(0.6, 1.0, smoothstep(1.0, 12.0, extent / ratio));
            vec2 along = extent > 0.0 ? d / extent : vec2(1.0, 0.0);
            bool visible = true;
            if (isFar(min(a, b), max(a, b))) {  // only what lies in a circle around the view
                vec3 line = lineThrough(source, target);
                float radius = length(halfSize) + 64.0;
                along = vec2(line.y, -line.x);
                float first = max(dot(a, along), -radius), last = min(dot(b, along), radius);
                visible = first <= last && abs(line.z) <= radius;
                a = along * first - line.xy * line.z;
                b = along * last - line.xy * line.z;
            }
            segment = vec4(a, b);
            float margin = reach + 1.0;
            vec2 base = (gl_VertexID & 1) == 0 ? a - along * margin : b + along * margin;
            vec2 side = vec2(-along.y, along.x) * ((gl_VertexID & 2) == 0 ? margin : -margin);
            gl_Position = visible ? vec4((base + side) / halfSize, 0.0, 1.0) : vec4(2.0, 2.0, 0.0, 1.0);
        }`;

    const segmentFragmentShader = `
        uniform vec4 color;
        flat in vec4 segment;
        flat in float reach;
        out vec4 result;
        void main() {
            vec2 toPixel = gl_FragCoord.xy - halfSize - segment.xy, d = segment.zw - segment.xy;
            float along = clamp(dot(toPixel, d) / max(dot(d, d), 1e-30), 0.0, 1.0);
            float cover = clamp(reach + 0.5 - length(toPixel - along * d), 0.0, 1.0) * color.a;
            result = vec4(color.rgb * cover, cover);
        }`;

    function compile(gl, shift, vertexSource, fragmentSource) {
        const program = gl.createProgram();
        for (const [type, source] of [[gl.VERTEX_SHADER, vertexSource], [gl.FRAGMENT_SHADER, fragmentSource]]) {
            const shader = gl.createShader(type);
            gl.shaderSource(shader, common(shift) + source);
            gl.compileShader(shader);
            gl.attachShader(program, shader);
            if (!gl.getShaderParameter(shader, gl.COMPILE_STATUS) && !gl.isContextLost()) {
                throw new Error("The graphics driver refuses a shader: " + gl.getShaderInfoLog(shader));
            }
        }
        gl.bindAttribLocation(program, 0, "ends");
        gl.linkProgram(program);
        if (!gl.getProgramParameter(program, gl.LINK_STATUS) && !gl.isContextLost()) {
            throw new Error("The graphics driver refuses a program: " + gl.getProgramInfoLog(program));
        }
        const uniforms = {};
        const number = gl.getProgramParameter(program, gl.ACTIVE_UNIFORMS) || 0;
        for (let i = 0; i < number; i++) {
            const name = gl.getActiveUniform(program, i).name;
            uniforms[name] = gl.getUniformLocation(program, name);
        }
        return { program, uniforms };
    }

    // A view of the mesh on a canvas. Positions on the canvas are CSS pixels from its upper left corner; `x`, `y`
    // and `unitsPerPixel` are in units of the mesh's frame.
    Kivo.MeshView = class {
        constructor(canvas) {
            this.canvas = canvas;
            this.mesh = null;
            this.x = this.y = 0;
            this.unitsPerPixel = 1;
            this.isFitted = true;  // keeps fitting when the canvas changes its size
            this.layers = { fill: true, edges: true, border: true, constraints: true };
            this.colors = {};
            this.onChange = () => {};
            this.isPending = false;
            this.gl = canvas.getContext("webgl2", { antialias: false, depth: false, alpha: false });
            if (!this.gl) {
                throw new Error("This page draws with WebGL 2, which this browser does not offer. It may be switched " +
                    "off in its settings, or the graphics driver may be too old.");
            }
            this.onLost = this.onRestored = this.onFailure = () => {};
            canvas.addEventListener("webglcontextlost", event => {
                event.preventDefault();
                this.onLost();
            });
            canvas.addEventListener("webglcontextrestored", () => {
                if (!this.mesh) return;
                try {
                    this.setMesh(this.mesh, { keepView: true });
                    this.onRestored();
                } catch (error) {
                    this.onFailure(error);
                }
            });
            new ResizeObserver(() => this.resize()).observe(canvas);
        }

        // Nothing is drawn after a failure.
        setMesh(mesh, { keepView = false } = {}) {
            this.mesh = mesh;
            try {
                this.upload();
            } catch (error) {
                this.mesh = null;
                throw error;
            }
            this.resize();
            if (!keepView) this.fit();
        }

        upload() {
            const gl = this.gl;
            const maxSize = gl.getParameter(gl.MAX_TEXTURE_SIZE);
            this.shift = Math.min(12, Math.floor(Math.log2(maxSize)));
            const most = Math.max(this.mesh.counts.vertices, this.mesh.counts.triangles);
            if (most > maxSize * (1 << this.shift)) {
                throw new Error("The mesh is larger than this graphics device can hold.");
            }
            gl.activeTexture(gl.TEXTURE0);
            this.makeTexture(gl.RGBA32F, gl.RGBA, gl.FLOAT, this.mesh.positions, 4);
            gl.activeTexture(gl.TEXTURE1);
            this.makeTexture(gl.RGB32UI, gl.RGB_INTEGER, gl.UNSIGNED_INT, this.mesh.corners, 3);
            this.borderEnds = this.makeEnds(this.mesh.borderEdges);
            this.constraintEnds = this.makeEnds(this.mesh.constraintEdges);
            this.triangleProgram = compile(gl, this.shift, triangleVertexShader, triangleFragmentShader);
            this.segmentProgram = compile(gl, this.shift, segmentVertexShader, segmentFragmentShader);
            if (gl.getError() === gl.OUT_OF_MEMORY) throw new Error("The graphics device has no room for the mesh.");
        }

        makeTexture(internalFormat, format, type, values, valuesPerTexel) {
            const gl = this.gl;
            const width = 1 << this.shift;
            const number = values.length / valuesPerTexel;
            const wholeRows = Math.floor(number / width), rest = number % width;
            gl.bindTexture(gl.TEXTURE_2D, gl.createTexture());
            gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MIN_FILTER, gl.NEAREST);
            gl.texParameteri(gl.TEXTURE_2D, gl.TEXTURE_MAG_FILTER, gl.NEAREST);
            gl.texStorage2D(gl.TEXTURE_2D, 1, internalFormat, width, Math.max(1, wholeRows + (rest ? 1 : 0)));
            if (wholeRows) gl.texSubImage2D(gl.TEXTURE_2D, 0, 0, 0, width, wholeRows, format, type, values);
            if (rest) {
                gl.texSubImage2D(gl.TEXTURE_2D, 0, 0, wholeRows, rest, 1, format, type,
                    values, wholeRows * width * valuesPerTexel);
            }
        }

        makeEnds(edges) {
            const gl = this.gl;
            const array = gl.createVertexArray();
            gl.bindVertexArray(array);
            gl.bindBuffer(gl.ARRAY_BUFFER, gl.createBuffer());
            gl.bufferData(gl.ARRAY_BUFFER, edges, gl.STATIC_DRAW);
            gl.enableVertexAttribArray(0);
            gl.vertexAttribIPointer(0, 2, gl.UNSIGNED_INT, 0, 0);
            gl.vertexAttribDivisor(0, 1);
            gl.bindVertexArray(null);
            return array;
        }

        resize() {
            const ratio = window.devicePixelRatio || 1;
            const width = Math.max(1, Math.round(this.canvas.clientWidth * ratio));
            const height = Math.max(1, Math.round(this.canvas.clientHeight * ratio));
            if (width !== this.canvas.width || height !== this.canvas.height) {
                this.canvas.width = width;
                this.canvas.height = height;
            }
            if (this.isFitted) this.fit();
            else this.change();
        }

        // The place of the mesh under a place of the canvas.
        placeAt(left, top) {
            return {
                x: this.x + (left - this.canvas.clientWidth / 2) * this.unitsPerPixel,
                y: this.y - (top - this.canvas.clientHeight / 2) * this.unitsPerPixel,
            };
        }

        // The insets keep the mesh clear of what lies on the canvas.
        fit() {
            if (!this.mesh) return;
            const { halfWidth, halfHeight } = this.mesh.frame;
            const { left, top, right, bottom } = this.insets || { left: 24, top: 24, right: 24, bottom: 24 };
            const width = Math.max(40, this.canvas.clientWidth - left - right);
            const height = Math.max(40, this.canvas.clientHeight - top - bottom);
            this.unitsPerPixel = this.fittedUnits = Math.max(2 * halfWidth / width, 2 * halfHeight / height);
            this.x = (right - left) / 2 * this.unitsPerPixel;
            this.y = (top - bottom) / 2 * this.unitsPerPixel;
            this.isFitted = true;
            this.change();
        }

        panBy(right, down) {
            const limit = value => Math.max(-2, Math.min(2, value));
            this.x = limit(this.x - right * this.unitsPerPixel);
            this.y = limit(this.y + down * this.unitsPerPixel);
            this.isFitted = false;
            this.change();
        }

        // No further than until two neighbouring doubles lie some pixels apart.
        zoomAt(left, top, factor) {
            if (!this.mesh) return;
            const place = this.placeAt(left, top);
            const least = Math.max(2e-13, this.mesh.frame.step / 16);
            const units = Math.max(least, Math.min(10 * this.fittedUnits, this.unitsPerPixel / factor));
            this.x = place.x - (place.x - this.x) * units / this.unitsPerPixel;
            this.y = place.y - (place.y - this.y) * units / this.unitsPerPixel;
            this.unitsPerPixel = units;
            this.panBy(0, 0);
        }

        // Draws once before the next frame, however often it is called until then.
        change() {
            if (!this.mesh) return;
            this.onChange();
            if (this.isPending) return;
            this.isPending = true;
            requestAnimationFrame(() => {
                this.isPending = false;
                if (this.mesh && !this.gl.isContextLost()) this.draw();
            });
        }

        draw() {
            const { gl, layers, colors, mesh } = this;
            gl.viewport(0, 0, this.canvas.width, this.canvas.height);
            gl.clearColor(...colors.background);
            gl.clear(gl.COLOR_BUFFER_BIT);
            if (layers.fill || layers.edges) this.drawTriangles();
            gl.enable(gl.BLEND);
            gl.blendFunc(gl.ONE, gl.ONE_MINUS_SRC_ALPHA);
            if (layers.border) this.drawSegments(this.borderEnds, mesh.borderEdges, colors.border);
            if (layers.constraints) this.drawSegments(this.constraintEnds, mesh.constraintEdges, colors.constraint);
            gl.disable(gl.BLEND);
        }

        drawTriangles() {
            const { gl, layers, colors, mesh } = this;
            const { uniforms } = this.use(this.triangleProgram);
            const fill = mesh.zone ? colors.zone : colors.fill;
            gl.uniform1i(uniforms.corners, 1);
            gl.uniform4fv(uniforms.fillColor, layers.fill ? fill : colors.background);
            gl.uniform4fv(uniforms.edgeColor, layers.edges ? colors.edge : [0, 0, 0, 0]);
            gl.bindVertexArray(null);
            gl.drawArrays(gl.TRIANGLES, 0, mesh.corners.length);
        }

        drawSegments(ends, edges, color) {
            const gl = this.gl;
            if (edges.length === 0) return;
            const { uniforms } = this.use(this.segmentProgram);
            gl.uniform1f(uniforms.halfWidth, 0.8 * this.ratio);
            gl.uniform4fv(uniforms.color, color);
            gl.bindVertexArray(ends);
            gl.drawArraysInstanced(gl.TRIANGLE_STRIP, 0, 4, edges.length / 2);
            gl.bindVertexArray(null);
        }

        get ratio() { return this.canvas.width / Math.max(1, this.canvas.clientWidth); }

        use(program) {
            const gl = this.gl, uniforms = program.uniforms;
            const highX = Math.fround(this.x), highY = Math.fround(this.y);
            gl.useProgram(program.program);
            gl.uniform1i(uniforms.positions, 0);
            gl.uniform4f(uniforms.center, highX, highY, this.x - highX, this.y - highY);
            gl.uniform1f(uniforms.scale, this.ratio / this.unitsPerPixel);
            gl.uniform2f(uniforms.halfSize, this.canvas.width / 2, this.canvas.height / 2);
            gl.uniform1f(uniforms.ratio, this.ratio);
            gl.uniform1f(uniforms.one, 1);
            return program;
        }
    };
})();
