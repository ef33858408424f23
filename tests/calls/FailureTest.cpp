// SPDX-License-Identifier: Apache-2.0
// Rows of a catalogue whose registration fails at any of its calls: what they had made until then goes in order, and
// nothing stays.
#include "Calls.h"

#include "host/memory/MemoryException.h"
#include "plugin/Registration.h"
#include "tests/network/CountedMemory.h"
#include "workbench/core/CreatorRegistry.h"
#include "workbench/core/InputCreatorRegistry.h"
#include "workbench/memory/LivingObjects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

/// Types of values that nobody else registers, one pair for each attempt: what registered a type does so once.
template <int Attempt>
struct Length {
    double meters = 0;
};
template <int Attempt>
struct Weight {
    double kilograms = 0;
};

} // namespace

template <int Attempt>
struct krod::VValueTrait<Length<Attempt>> {
    static std::string Text(const Length<Attempt>& value) { return VValueTrait<double>::Text(value.meters); }
    static TextResult setValueFromText(Length<Attempt>& value, std::string_view text) {
        return VValueTrait<double>::setValueFromText(value.meters, text);
    }
};

template <int Attempt>
struct krod::VValueTrait<Weight<Attempt>> {
    static std::string Text(const Weight<Attempt>& value) {
        return VValueTrait<double>::Text(value.kilograms);
    }
    static TextResult setValueFromText(Weight<Attempt>& value, std::string_view text) {
        return VValueTrait<double>::setValueFromText(value.kilograms, text);
    }
};

namespace {

using namespace krod;
using Lines = std::vector<std::string>;

template <int Attempt>
struct Module : VObject {
    Module(const std::string& name, const StrongPtr<VCreationPreferences>&) : VObject(name) {}
};

constexpr CreatorTexts Texts = {.category = "a category that needs memory of its own",
                                .source = "a source file that needs memory of its own",
                                .name = "a name that needs memory of its own",
                                .group = "a group that needs memory of its own",
                                .help = "a long text that needs memory of its own",
                                .description = "a short text that needs memory of its own"};

template <int Attempt>
struct Row {
    CreatorRegistration<Module<Attempt>, void> creator{Texts, 7};
    SourceRegistration<Module<Attempt>, Weight<Attempt>, SlotTypes<Length<Attempt>>> source{creator};
};

/// Everything that a row adds to.
struct Inventory {
    std::size_t creators = workbench::CreatorRegistry::entries().size();
    std::size_t inputCreators = workbench::InputCreatorRegistry::count();
    std::size_t objects = workbench::livingObjectCount();
    friend bool operator==(const Inventory&, const Inventory&) = default;
};

template <int Attempt>
void expectNoTypes() {
    EXPECT_FALSE(TypedSlotCreator::find(typeid(Length<Attempt>)));
    EXPECT_FALSE(VValueCreator::find(Typename<Length<Attempt>>()));
    EXPECT_FALSE(VValueCreator::find(Typename<Weight<Attempt>>()));
}

/// The calls of one row, of which the one with that number fails; with 0 none does.
template <int Attempt>
Lines callsOfRow() {
    const Inventory before;
    Lines lines;
    bool failed = false;
    {
        const calls::Record record;
        calls::changes().failing = Attempt;
        try {
            const auto row = std::make_unique<Row<Attempt>>();
            EXPECT_EQ(workbench::CreatorRegistry::entries().size(), before.creators + 1);
            EXPECT_EQ(workbench::InputCreatorRegistry::count(), before.inputCreators + 1);
        } catch (const MemoryException&) {
            failed = true;
        }
        calls::changes() = {};
        lines = calls::Record::take();
    }
    EXPECT_EQ(failed, Attempt != 0) << "attempt " << Attempt;
    EXPECT_EQ(Inventory(), before) << "attempt " << Attempt;
    expectNoTypes<Attempt>();
    return lines;
}

/// Without the attempt's number in the names of types.
Lines withoutNumbers(Lines lines) {
    for (std::string& line : lines)
        for (std::size_t at = 0; (at = line.find('<', at)) != std::string::npos; ++at)
            line.erase(at, line.find('>', at) + 1 - at);
    return lines;
}

/// What takes back what these calls have made, in order.
Lines undone(const Lines& made) {
    const auto has = [&made](const std::string& words) {
        return std::any_of(made.begin(), made.end(),
                           [&words](const auto& line) { return line.starts_with(words); });
    };
    Lines lines;
    for (const auto& [call, undoing] : std::initializer_list<std::pair<const char*, Lines>>{
             {"value creator of Weight", {"value creator of Weight freed"}},
             {"slot creator of Length",
              {"slot creator of Length withdrawn as Length", "slot creator of Length freed"}},
             {"value creator of Length", {"value creator of Length freed"}},
             {"registerVInput", {"unregisterVInput(Weight, creator of a name that needs memory of its own)"}},
             {"fflush(stdout)", {"deleteAllInstances of a name that needs memory of its own, Module"}}})
        if (has(call)) lines.insert(lines.end(), undoing.begin(), undoing.end());
    return lines;
}

/// A row that nothing hinders.
const Lines Whole = {
    "assign category: a category that needs memory of its own",
    "assign source: a source file that needs memory of its own",
    "assign name: a name that needs memory of its own",
    "assign group: a group that needs memory of its own",
    "assign help: a long text that needs memory of its own",
    "assign description: a short text that needs memory of its own",
    "VCreatorBase(the record, 7, no preferences, false, KROD_API_VERSION)",
    "keyname with /",
    "trace at 100: VCreator::VCreator(a category that needs memory of its own/a name that needs memory of "
    "its own,7)",
    "fflush(stdout)",
    "registerVInput(Weight, creator of a name that needs memory of its own)",
    "value creator of Length registered",
    "slot creator of Length registered as Length",
    "value creator of Weight registered",
};
constexpr int Calls = 12; ///< that a row makes and that may fail

template <int... Attempts>
std::vector<Lines> callsOfRows(std::integer_sequence<int, Attempts...>) {
    return {withoutNumbers(callsOfRow<Attempts>())...};
}

/// One attempt more than there are calls that may fail, each with types of its own.
TEST(Failure, ofEachCall_undoesInOrderWhatWasMade) {
    const std::vector<Lines> found = callsOfRows(std::make_integer_sequence<int, Calls + 1>());
    Lines made;
    std::size_t attempt = 0;
    for (const std::string& line : Whole) {
        const bool mayFail = !line.starts_with("trace") && !line.starts_with("fflush");
        if (mayFail) {
            ASSERT_LT(++attempt, found.size());
            Lines required = made;
            const Lines undoing = undone(made);
            required.insert(required.end(), undoing.begin(), undoing.end());
            EXPECT_EQ(found[attempt], required) << "attempt " << attempt << ", which fails at " << line;
        }
        made.push_back(line);
    }
    EXPECT_EQ(attempt, static_cast<std::size_t>(Calls));
    const Lines undoing = undone(made);
    made.insert(made.end(), undoing.begin(), undoing.end());
    EXPECT_EQ(found[0], made);
}

/// Texts and creator: six texts, the creator and its key.
TEST(Failure, ofEachText_leavesNoMemory) {
    using Creator = CreatorRegistration<Module<0>, void>;
    { // the host's registry and the record have memory of their own from here on
        const calls::Record record;
        { const Creator first(Texts, 7); }
        EXPECT_FALSE(calls::Record::take().empty());
    }
    const Inventory before;
    for (int failing = 1; failing <= 8; ++failing) {
        const std::size_t bytes = workbench::bytesInUse();
        {
            const calls::Record record;
            calls::changes().failing = failing;
            EXPECT_THROW(Creator(Texts, 7), MemoryException) << failing;
            EXPECT_EQ(std::ssize(calls::Record::take()), failing - 1);
        }
        EXPECT_EQ(workbench::bytesInUse(), bytes) << failing;
        EXPECT_EQ(Inventory(), before) << failing;
    }
}

} // namespace
