// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/worker/ShaderTrial.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace workbench {
namespace {

template <class Number>
void put(std::vector<char>& bytes, Number number) {
    const auto* const begin = reinterpret_cast<const char*>(&number);
    bytes.insert(bytes.end(), begin, begin + sizeof number);
}

void put(std::vector<char>& bytes, const std::string& text) {
    put(bytes, static_cast<std::uint64_t>(text.size()));
    bytes.insert(bytes.end(), text.begin(), text.end());
}

/// Both halves are of one build, so that numbers travel as they lie in memory.
class Reader {
public:
    explicit Reader(const std::vector<char>& from) : bytes(from) {}

    template <class Number>
    Number number() {
        Number value{};
        require(sizeof value);
        std::memcpy(&value, bytes.data() + at, sizeof value);
        at += sizeof value;
        return value;
    }

    std::string text() {
        const auto size = number<std::uint64_t>();
        require(size);
        std::string value(bytes.data() + at, static_cast<std::size_t>(size));
        at += value.size();
        return value;
    }

    void requireEnd() const {
        if (at != bytes.size()) throw std::runtime_error("the trial has a rest");
    }

private:
    void require(std::uint64_t size) const {
        if (size > bytes.size() - at) throw std::runtime_error("the trial is cut off");
    }

    const std::vector<char>& bytes;
    std::size_t at = 0;
};

} // namespace

std::vector<char> packed(const ShaderTrial& trial) {
    std::vector<char> bytes;
    put(bytes, trial.gpu);
    put(bytes, static_cast<char>(trial.strict ? 1 : 0));
    put(bytes, trial.vertexText);
    put(bytes, trial.fragmentText);
    return bytes;
}

ShaderTrial unpacked(const std::vector<char>& bytes) {
    Reader reader(bytes);
    ShaderTrial trial;
    trial.gpu = reader.text();
    trial.strict = reader.number<char>() != 0;
    trial.vertexText = reader.text();
    trial.fragmentText = reader.text();
    reader.requireEnd();
    return trial;
}

} // namespace workbench
