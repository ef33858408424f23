// SPDX-License-Identifier: Apache-2.0
// Small modules, creators and a trace record for the tests of the host's core.
#pragma once

#include "host/core/VCreatorBase.h"
#include "host/core/VObject.h"
#include "workbench/core/Trace.h"

#include <string>
#include <string_view>

/// A module that counts how often one of its kind was deleted.
class TestModule : public krod::VObject {
public:
    using VObject::VObject;
    ~TestModule() override { ++deleted; }
    static inline int deleted = 0;
};

/// A creator of modules that deletes its instances with itself, as plug-ins do.
template <class Module>
class TestCreator : public krod::VCreatorBase {
public:
    explicit TestCreator(const krod::VCreatorProperties& properties)
        : VCreatorBase(properties, 0, nullptr, false, "KROD_API_VERSION") {}
    explicit TestCreator(const std::string& keyname)
        : VCreatorBase(keyname, -1000, nullptr, true, "KROD_API_VERSION") {}
    ~TestCreator() override { withdrawInstances(); }

    void withdrawInstances() noexcept { deleteAllInstances(typeid(Module)); }

    [[nodiscard]] krod::StrongPtr<krod::VObject> create(const std::string& name,
                                                        krod::VCreationContext& /*context*/) override {
        const krod::StrongPtr<krod::VObject> made(new Module(name.empty() ? this->name() : name));
        made->setCreator(krod::WeakPtr<krod::VCreatorBase>(this));
        return made;
    }
};

/// The properties of a creator with a key and, unless it is empty, a source.
inline krod::VCreatorProperties propertiesOf(const std::string& category, const std::string& name,
                                             const std::string& source = {}) {
    krod::VCreatorProperties properties;
    krod::VCreatorCategory(category).assign(properties);
    krod::VCreatorName(name).assign(properties);
    if (!source.empty()) krod::VCreatorSource(source).assign(properties);
    return properties;
}

/// Collects what is traced while it lives.
class TraceRecord {
public:
    explicit TraceRecord(int level) {
        workbench::setTraceLevel(level);
        workbench::setTraceSink([this](int /*level*/, std::string_view line) { text += line; });
    }
    TraceRecord(const TraceRecord&) = delete;
    TraceRecord& operator=(const TraceRecord&) = delete;
    ~TraceRecord() {
        workbench::setTraceSink({});
        workbench::setTraceLevel(0);
    }

    std::string text;
};
