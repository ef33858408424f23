// SPDX-License-Identifier: Apache-2.0
// A small model in many formats: a hilly square of 32 triangles.
#pragma once

#include <string>
#include <vector>

/// The names of all formats. Those that come as text and as numbers have two: "ply" and "ply_binary".
std::vector<std::string> modelFormats();

/// The extension of a file of that format.
std::string modelExtension(const std::string& format);

/// The bytes of a good file of that format. "3ds" and "dae" come from the package assimp-testmodels.
std::string modelBytes(const std::string& format);

/// A glTF file with the given nodes (the first is the scene's) and the given place of its buffer.
std::string gltfText(const std::string& nodes, const std::string& buffer);
