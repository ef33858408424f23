// SPDX-License-Identifier: Apache-2.0
// The inputs and outputs of one object.
#pragma once

#include "host/core/AcceptInfo.h"
#include "host/core/VParameter.h"

#include <string>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace krod {

/// Parameters (inputs with values), sinks (inputs for other objects) and outputs of one object, each list in
/// the order of declaration, each name once per list. An empty parameter is refused with PointerException.
class KROD_API VSlotContainer {
public:
    struct Input {
        std::string name;
        int expertLevel; ///< 0 everyday; the host hides higher levels
        StrongPtr<VParameter> parameter;
    };
    struct Sink {
        std::string name;
        std::string typeName; ///< of the objects or values that may be connected
    };
    struct Output {
        std::string name;
        StrongPtr<VParameter> parameter;
    };

    /// [host · shares] Adds a parameter; false, and nothing changed, when one of that name is there.
    bool addInput(const std::string& name, int expertLevel, const StrongPtr<VParameter>& parameter);
    /// [host · copies] Declares an input for other objects.
    void addSink(const std::string& name, const std::string& typeName);
    /// [host · shares] Adds an output under the parameter's name; false when one of that name is there.
    bool addOutput(const StrongPtr<VParameter>& parameter);

    /// [host · borrows] The lists.
    [[nodiscard]] const std::vector<Input>& inputs() const noexcept { return inputList; }
    [[nodiscard]] const std::vector<Sink>& sinks() const noexcept { return sinkList; }
    [[nodiscard]] const std::vector<Output>& outputs() const noexcept { return outputList; }
    /// [host · shares] The parameter or output of that name, or an empty reference.
    [[nodiscard]] StrongPtr<VParameter> input(std::string_view name) const noexcept;
    [[nodiscard]] StrongPtr<VParameter> output(std::string_view name) const noexcept;

    /// [host · gives] One entry per output whose value is of that type, in the order of declaration, ranking
    /// 0.
    [[nodiscard]] AcceptInfoList getAcceptInfoList(const std::type_info& type) const;

    /// [host] Lets go of every output value, before the library of its processor is unloaded.
    void clearOutputs() noexcept;

private:
    std::vector<Input> inputList;
    std::vector<Sink> sinkList;
    std::vector<Output> outputList;
};

} // namespace krod
