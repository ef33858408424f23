// SPDX-License-Identifier: Apache-2.0
// Creators, load hook and entry by hand: the plug-in kit would not let them go wrong.
#include "tests/mutants/Modules.h"

#include "host/core/VInitialization.h"
#include "plugin/Registration.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

using namespace krod;
using mutant::Factor;
using mutant::Half;
using mutant::OtherHalf;
using mutant::Output;

class HalfCreator : public VCreator<Half, void> {
public:
    using VCreator::VCreator;

    StrongPtr<VObject> create(const std::string& requested, VCreationContext& context) override {
        if (has(Fault::CreationUnreported) || has(Fault::ObjectsStay))
            return createByHand(requested, context);
        if (!has(Fault::SwallowsExceptions)) return kept(VCreator::create(requested, context));
        try {
            return VCreator::create(requested, context);
        } catch (const std::runtime_error&) {
            return {};
        }
    }

private:
    StrongPtr<VObject> createByHand(const std::string& requested, VCreationContext& context) {
        const std::string& objectName = requested.empty() ? name() : requested;
        Vprintf(100, "VCreator::create(%s)\n", requested.c_str());
        StrongPtr<VObject> made = (new OtherHalf(objectName, {}))->self();
        Vprintf(100, "VCreator::create(%s) got derived object\n", requested.c_str());
        made->setCreator(WeakPtr<VCreatorBase>(this));
        made->enableRequestProcessing();
        if (!has(Fault::CreationUnreported)) VActionNotifier::VObjectCreation(made, context, *this);
        return made;
    }

    static StrongPtr<VObject> kept(StrongPtr<VObject> made) {
        if (has(Fault::ObjectKept)) new StrongPtr<VObject>(made);
        return made;
    }
};

/// Offers the creator without a word when the host refuses.
class SilentInput {
public:
    explicit SilentInput(HalfCreator& creator) : wrapper(creator) { registerVInput(typeid(Output), wrapper); }
    SilentInput(const SilentInput&) = delete;
    SilentInput& operator=(const SilentInput&) = delete;
    ~SilentInput() {
        if (!has(Fault::InputCreatorStays)) unregisterVInput(typeid(Output), wrapper);
    }

private:
    VInputCreator<Output, HalfCreator> wrapper;
};

CreatorTexts halfTexts() {
    return {.category = "Mutant",
            .name = has(Fault::KeyWithBlank) ? "Ha lf" : "Half",
            .help = "Multiplies colours by one half.",
            .description = has(Fault::ControlCharacter) ? "Halves\x1b colours." : "Halves colours."};
}

struct HalfRow {
    HalfCreator creator{merged(halfTexts()), 5, {}, false, ApiKey};
    std::optional<InputRegistration<Output, HalfCreator>> input;
    std::optional<SilentInput> silentInput;
    std::optional<TypedSlot<int>::Registration> type;
    ValueRegistration<Output> value;

    HalfRow() {
        if (!has(Fault::TypeNotRegistered)) type.emplace();
        if (has(Fault::RefusalUnsaid) || has(Fault::InputCreatorStays))
            silentInput.emplace(creator);
        else if (!has(Fault::InputCreatorMissing))
            input.emplace(creator);
    }
};

struct FactorRow {
    using Registration = CreatorRegistration<Factor, void>;
    static CreatorTexts texts(const char* name) {
        return {.category = "Mutant",
                .source = "Factor",
                .name = name,
                .help = has(Fault::TextLetter) ? "Multiplies by a facter." : "Multiplies by a factor.",
                .description = "Multiplies."};
    }
    Registration registration{texts("Factor"), has(Fault::OrderValue) ? 8 : 7};
    std::optional<Registration> second;
    SlotTypes<double> types;

    FactorRow() {
        if (has(Fault::OneKeyTwice)) second.emplace(texts("Factor"), 7);
        if (has(Fault::SharedClass)) second.emplace(texts("Again"), 7);
    }
};

/// Whether this library was loaded into the process before: the name of its thread tells.
bool isSecondLife() {
    char name[16] = {};
    ::prctl(PR_GET_NAME, name);
    ::prctl(PR_SET_NAME, "mutant");
    return std::strcmp(name, "mutant") == 0;
}

void* volatile lost = nullptr;

void goWrong() {
    misbehave();
    if (has(Fault::ThrowsInLoad)) throw std::runtime_error("out of order");
    if (has(Fault::SecondLifeDiffers) && isSecondLife()) Vprintf(100, "I have been here before\n");
    if (has(Fault::LeaksEachLife)) lost = ::operator new(2000);
    if (has(Fault::DiesOfClosedOutput) && ::fcntl(1, F_GETFD) < 0) die();
    if (has(Fault::DiesInOtherThread) && ::gettid() != ::getpid()) die();
    if (!has(Fault::DiesWithoutMemoryInLoad)) return;
    void* const memory = ::operator new(300, std::nothrow);
    if (!memory) die();
    ::operator delete(memory);
}

/// The rows, Half (row 2) first.
struct Catalogue {
    std::unique_ptr<VValueCreator> once;
    std::optional<FactorRow> early;
    std::optional<HalfRow> half;
    std::optional<FactorRow> factor;

    Catalogue() {
        goWrong();
        if (has(Fault::NoCreator) || (has(Fault::OnlyOnce) && isSecond())) return;
        if (has(Fault::RowsSwapped)) early.emplace();
        half.emplace();
        if (!has(Fault::RowsSwapped)) factor.emplace();
    }

    bool isSecond() {
        if (VValueCreator::find("Mutant")) return true;
        once = std::make_unique<TypedValueCreator<int>>();
        VValueCreator::registerCreator("Mutant", *once);
        return false;
    }
};

// ---- load hook ----

constinit bool attached = false;

void tell(int reason) {
    VInitialization::initPlugin(reason, has(Fault::WrongHookName) ? "mutan" : "mutant", ApiKey);
}

void attach() {
    attached = true;
    if (!has(Fault::NoAttach)) tell(0);
    if (has(Fault::AttachTwice)) tell(0);
}

void detachOnce() {
    if (!attached) return;
    attached = false;
    if (!has(Fault::NoDetach)) tell(1);
}

/// Attaches when it is built, and detaches when it is destroyed, if that is its turn.
struct Hook {
    explicit Hook(bool attaches, bool detaches) : detaches(detaches) {
        if (attaches) attach();
    }
    Hook(const Hook&) = delete;
    Hook& operator=(const Hook&) = delete;
    ~Hook() {
        if (detaches) detachOnce();
    }
    bool detaches;
};

[[gnu::init_priority(1000)]] const Hook early(has(Fault::EarlyAttach), has(Fault::LateDetach));
[[gnu::init_priority(2000)]] const Catalogue catalogue;
[[gnu::init_priority(3000)]] const Hook late(!has(Fault::EarlyAttach),
                                             !has(Fault::LateDetach) && !has(Fault::LateDetachAtExit));
[[gnu::destructor]] void finish() {
    if (!has(Fault::LateDetach)) detachOnce();
}

} // namespace

// ---- entry ----

int answer(VInitialization* host) {
    if (has(Fault::EntryPrints)) std::puts("hello");
    if (has(Fault::EntryTraces)) Vprintf(100, "hello\n");
    const int verdict = host->IsCompatible(has(Fault::WrongKey) ? "KROD_API" : ApiKey);
    if (has(Fault::RefusalLeaks) && verdict <= 0) new StrongPtr<TypedValue<int>>(makeValue(1));
    if (has(Fault::NormalisedVerdict)) return verdict > 0 ? 1 : verdict < 0 ? -1 : 0;
    return verdict;
}
