uniform sampler2D image;
uniform highp float opacity;
uniform lowp float mask;
varying mediump vec4 uv;
void main() {
    vec4 color = texture2D(image, vec2(uv.s / uv.q, uv.t));
    if (mask < 1.0)
       color.a = 1.0;
    if (color.a == 0.0)
        discard;
#if defined(GRAYSCALE)
    color = vec4(color.rrr, color.a);
#elif defined(LIGHTER)
    color = vec4(color.rgb + vec3(0.5, 0.5, 0.5), color.a);
#elif defined(DARKER)
    color = vec4(color.rgb - vec3(0.5, 0.5, 0.5), color.a);
#endif
    gl_FragColor = color * opacity;
}
