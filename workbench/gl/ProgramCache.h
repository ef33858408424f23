// SPDX-License-Identifier: Apache-2.0
// Compiled programs, kept behind krod::GLProgram.
#pragma once

#include "workbench/gl/GLName.h"

#include "host/Export.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>

namespace workbench {

class Failure;

/// The four texts that make a program.
struct ProgramTexts {
    std::string vertexText, fragmentText, vertexLabel, fragmentLabel;
};

/// A program that the driver has linked.
struct CompiledProgram {
    GLName name;
    std::optional<double> secondsPerPixel; ///< of one that may come from a user; see requireHarmless
};

/// What the cache has done since the session began.
struct ProgramCacheStatistics {
    std::uint64_t hits = 0;      ///< asked for and there, failures included
    std::uint64_t misses = 0;    ///< asked for and not there
    std::uint64_t compiles = 0;  ///< programs that the driver was asked to compile and link
    std::uint64_t failures = 0;  ///< those of them that it refused
    std::uint64_t evictions = 0; ///< entries that had to make room
    double compileSeconds = 0;   ///< spent in the driver's compiler and linker
    std::size_t entries = 0;     ///< kept now
};

/// Keeps the programs that were used last, and remembers which texts the driver refused, so that these are
/// neither compiled nor reported anew in every frame.
class KROD_API ProgramCache {
public:
    struct Settings {
        std::string driver;   ///< part of every key
        bool strict = false;  ///< without shims
        std::size_t most = 0; ///< entries; 0 keeps nothing
    };

    explicit ProgramCache(Settings settings) : settings(std::move(settings)) {}

    /// The program of these texts. Throws Failure(Shader) when the driver refuses them; for texts that it
    /// refused before, the same failure as then.
    [[nodiscard]] std::shared_ptr<CompiledProgram> find(const ProgramTexts& texts);
    [[nodiscard]] ProgramCacheStatistics statistics() const noexcept;
    /// True the first time for this uniform of this program text.
    [[nodiscard]] bool isFirstReport(const std::string& fragmentText, const std::string& uniform);

private:
    using Outcome = std::variant<std::shared_ptr<CompiledProgram>, std::shared_ptr<const Failure>>;
    struct Entry {
        std::string key;
        Outcome outcome;
    };

    [[nodiscard]] Outcome compile(const ProgramTexts& texts);
    void keep(std::string key, Outcome outcome);

    Settings settings;
    ProgramCacheStatistics counts;
    std::list<Entry> entries; // the one used last comes first
    std::unordered_map<std::string_view, std::list<Entry>::iterator> index;
    std::set<std::pair<std::size_t, std::string>> reportedUniforms; // hash of the text, name
};

} // namespace workbench
