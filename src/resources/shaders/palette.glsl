uniform sampler2D image;
uniform sampler2D palette;
uniform highp float opacity;
uniform lowp float mask;
varying mediump vec4 uv;
void main() {
    float index = texture2D(image, vec2(uv.s / uv.q, uv.t)).r;
    vec4 color = texture2D(palette, vec2(index, 0.5));
    if (mask < 1.0)
       color.a = 1.0;
    if (color.a == 0.0)
        discard;
#if defined(GRAYSCALE)
    gl_FragColor = vec4(color.rrr, color.a * opacity);
#elif defined(LIGHTER)
    gl_FragColor = vec4(color.rgb + vec3(0.5, 0.5, 0.5), color.a * opacity);
#elif defined(DARKER)
    gl_FragColor = vec4(color.rgb - vec3(0.5, 0.5, 0.5), color.a * opacity);
#else
    gl_FragColor = vec4(color.rgb, color.a * opacity);
#endif
}
