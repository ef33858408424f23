// SPDX-License-Identifier: Apache-2.0
// Memory that runs out while the plug-in is loaded, and what may be done without any: unloading, and the update of
// a module whose output is empty.
#include "Scene.h"

#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/core/ObjectRegistry.h"
#include "workbench/validate/FailingMemory.h"

#include "host/core/VRequest.h"
#include "host/memory/MemoryException.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <exception>
#include <string>
#include <typeinfo>
#include <vector>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using workbench::validate::FailingMemory;

/// How a process ends in which one request for memory fails while the plug-in is loaded.
enum class End { AsMemoryException, OtherException, CreatorsLeft, Loaded, NotReached };

struct Ending {
    End end = End::Loaded;
    std::size_t creators = 0; ///< that were registered when the exception left
};

constexpr long MostRequests = 20000;
constexpr std::size_t Creators = 15;
Ending ending; ///< of this process

[[noreturn]] void leave(End end) { ::_exit(static_cast<int>(end) << 4 | static_cast<int>(ending.creators)); }

[[noreturn]] void leaveAfterWithdrawal() {
    const bool left =
        !workbench::CreatorRegistry::entries().empty() || workbench::InputCreatorRegistry::count() != 0;
    leave(left ? End::CreatorsLeft : ending.end);
}

/// Nobody can catch what leaves a static initialiser. The process exits in good order, which withdraws what
/// was registered before.
[[noreturn]] void exitAfterException() {
    ending.creators = workbench::CreatorRegistry::entries().size();
    try {
        std::rethrow_exception(std::current_exception());
    } catch (const std::exception& thrown) {
        const bool expected = typeid(thrown) == typeid(krod::MemoryException);
        ending.end = expected ? End::AsMemoryException : End::OtherException;
    }
    std::exit(0);
}

[[noreturn]] void loadWithoutMemory(long request) {
    std::atexit(leaveAfterWithdrawal);
    std::set_terminate(exitAfterException);
    const FailingMemory failing(request);
    const void* const library = ::dlopen(TOVAR_PLIME, RTLD_NOW | RTLD_LOCAL);
    if (!FailingMemory::hasFailed()) leave(End::NotReached);
    leave(library ? End::Loaded : End::OtherException);
}

Ending endOfLoading(long request) {
    const pid_t child = ::fork();
    if (child == 0) loadWithoutMemory(request);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) continue;
    EXPECT_TRUE(WIFEXITED(status)) << "request " << request << " ended it with signal " << WTERMSIG(status);
    const int code = WEXITSTATUS(status);
    return {static_cast<End>(code >> 4), static_cast<std::size_t>(code & 15)};
}

} // namespace

TEST(WithoutMemory, Loading_ends_as_the_memory_librarys_exception_and_everything_is_withdrawn) {
    std::size_t creators = 0;
    long request = 1;
    for (; request < MostRequests; ++request) {
        const Ending loading = endOfLoading(request);
        if (loading.end == End::NotReached) break;
        EXPECT_EQ(loading.end, End::AsMemoryException) << "request " << request;
        EXPECT_GE(loading.creators, creators) << "request " << request;
        creators = loading.creators;
    }
    EXPECT_GT(request, 100) << "fifteen creators with their texts and types ask for more";
    EXPECT_LT(request, MostRequests);
    EXPECT_EQ(creators, Creators)
        << "what stands beside the last creator fails: that one goes with the library";
}

TEST(WithoutMemory, Unloading_works_with_and_without_objects) {
    for (const bool withObjects : {false, true}) { // the host may not have made any before
        SCOPED_TRACE(withObjects);
        void* const library = ::dlopen(TOVAR_PLIME, RTLD_NOW | RTLD_LOCAL);
        ASSERT_TRUE(library) << ::dlerror();
        const auto held =
            withObjects ? scene::makeCatalogue() : std::vector<krod::StrongPtr<krod::VObject>>();
        {
            const FailingMemory failing(1);
            ::dlclose(library);
            EXPECT_FALSE(FailingMemory::hasFailed());
        }
        for (const auto& object : held) EXPECT_FALSE(object);
        EXPECT_EQ(workbench::ObjectRegistry::count(), 0U);
        EXPECT_TRUE(workbench::CreatorRegistry::entries().empty());
        EXPECT_EQ(workbench::InputCreatorRegistry::count(), 0U);
        EXPECT_FALSE(scene::isInMemory(TOVAR_PLIME));
    }
}

TEST(WithoutMemory, Update_with_an_empty_output_composes_no_text) {
    workbench::PluginManager manager;
    manager.load(TOVAR_PLIME);
    for (const char* const key : {"Hollywood/ColorGammaCorrection", "Hollywood/HDRColoredToneMapping",
                                  "Hollywood/HDRToneMapping", "Hollywood/PixelBlur"}) {
        SCOPED_TRACE(key);
        const auto object = scene::make(key);
        const krod::VValuePool pool;
        krod::VRequest request(pool);
        EXPECT_TRUE(object->update(request, 1.0)) << "with its processor";
        object->slots().clearOutputs();
        const FailingMemory failing(1);
        EXPECT_TRUE(object->update(request, 1.0));
        EXPECT_FALSE(FailingMemory::hasFailed());
    }
}
