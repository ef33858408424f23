// SPDX-License-Identifier: Apache-2.0
// What the tests of models share: whether a model is sound, and what comes of a file that may be none.
#pragma once

#include "FilesTest.h"

#include "workbench/files/Model.h"

/// The number of triangles in all meshes.
std::size_t trianglesOf(const workbench::Model& model);

/// Expects at least one mesh, indices that fit, finite numbers, and normals of length 1 or 0.
void expectSound(const workbench::Model& model);

/// Reads a model and says what came of it: "read", "refused", "crashed", "hung" or "out of memory". Expects a sound
/// model, or one line of a sensible length that begins with the file's path; and that no child is left.
std::string outcomeOfModel(const std::filesystem::path& path, const workbench::ModelLimits& limits);
