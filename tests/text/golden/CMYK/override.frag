#version 150
// mine
	void main() { gl_FragColor = vec4(1); }