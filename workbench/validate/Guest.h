// SPDX-License-Identifier: Apache-2.0
// The plug-in, loaded into the process of a check, and what is seen and heard of it.
#pragma once

#include "host/core/VCreatorBase.h"
#include "workbench/core/ActionListener.h"
#include "workbench/core/PluginManager.h"
#include "workbench/platform/SharedLibrary.h"
#include "workbench/validate/Trial.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace workbench::validate {

/// One creator of the plug-in.
struct Maker {
    krod::VCreatorBase* creator;
    std::string label; ///< "Display/Depth@DisplayDepth", for messages

    /// A new object. Throws std::runtime_error when the creator gives none, and what the module throws.
    [[nodiscard]] krod::StrongPtr<krod::VObject> make(const std::string& name = "") const;
};

/// Loads the plug-in. At its end the plug-in stays where it is, so that a check of one thing does not stumble
/// over the unloading: a check's process ends without it. Throws Failure.
class Guest {
public:
    explicit Guest(const Trial& trial) : Guest(trial.plugin().string()) {}
    explicit Guest(const std::string& path);

    [[nodiscard]] PluginManager& manager() const noexcept { return *plugins; }
    [[nodiscard]] LibraryId library() const noexcept { return id; }
    /// The plug-in's creators in the order of their registration.
    [[nodiscard]] std::vector<Maker> makers() const;
    /// The living reference-counted objects of the plug-in, creators left out.
    [[nodiscard]] std::size_t livingObjects() const;
    /// Unloads it and gives the status afterwards. Throws Failure.
    const PluginStatus& unload();

private:
    PluginManager* plugins;
    LibraryId id;
};

/// A registered creator, whichever library it is of.
[[nodiscard]] std::vector<Maker> makersOf(LibraryId library);
/// Where in memory the file of that path is mapped.
[[nodiscard]] std::vector<AddressRange> mappingsOf(const std::string& path);
/// Whether an address lies in one of the ranges.
[[nodiscard]] bool isInside(const std::vector<AddressRange>& ranges, const void* address);

/// Everything that is traced up to level 100, from construction to destruction.
class TraceRecord {
public:
    using Listener = std::function<void(std::string_view line)>;
    /// The listener, which may be empty, hears each line as it comes.
    explicit TraceRecord(Listener listener = {});
    TraceRecord(const TraceRecord&) = delete;
    TraceRecord& operator=(const TraceRecord&) = delete;
    ~TraceRecord();

    std::vector<std::string> lines; ///< with their line ends
};

/// Everything that reaches descriptor 1, whoever writes it, from construction to text().
class OutputRecord {
public:
    OutputRecord();
    OutputRecord(const OutputRecord&) = delete;
    OutputRecord& operator=(const OutputRecord&) = delete;
    ~OutputRecord();
    /// Ends the record.
    std::string text();

private:
    int original, file;
};

/// Hears warnings and creations as long as it lives.
class Ears : public ActionListener {
public:
    Ears() : before(setActionListener(this)) {}
    Ears(const Ears&) = delete;
    Ears& operator=(const Ears&) = delete;
    ~Ears() override { setActionListener(before); }

    void warning(const std::string& text) override { warnings.push_back(text); }
    void created(const krod::StrongPtr<krod::VObject>& object, krod::VCreationContext& context,
                 krod::VCreatorBase& creator) override {
        creations.push_back({object.get(), &context, &creator});
    }

    struct Creation {
        const krod::VObject* object;
        const krod::VCreationContext* context;
        const krod::VCreatorBase* creator;
    };
    std::vector<std::string> warnings;
    std::vector<Creation> creations;

private:
    ActionListener* before;
};

} // namespace workbench::validate
