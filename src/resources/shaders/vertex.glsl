attribute highp vec2 position;
attribute highp vec4 texCoord;
uniform highp mat4 matrix;
varying mediump vec4 uv;
void main() {
    uv = texCoord;
    gl_Position = matrix * vec4(position, 0.0, 1.0);
}
