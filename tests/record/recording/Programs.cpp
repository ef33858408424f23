// SPDX-License-Identifier: Apache-2.0
// Programs, shader files and errors.
#include "Recording.h"

#include "host/gl/GLError.h"
#include "host/gl/GLProgram.h"
#include "host/gl/Programmable.h"
#include "host/values/VValueTrait.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace recording {
namespace {

std::string number(int value) { return krod::VValueTrait<int>::Text(value); }

std::string nameOfNextProgram() {
    if (host().refusesPrograms) {
        host().calls.add("GLProgram refused");
        throw std::runtime_error("program refused");
    }
    return "GLProgram " + number(++host().programsMade);
}

} // namespace

Host& host() {
    static Host only;
    return only;
}

std::string sizeAndHash(const std::string& text) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char byte : text) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), hash, 16);
    std::string hex(digits.data(), end.ptr);
    hex.insert(0, digits.size() - hex.size(), '0');
    return number(static_cast<int>(text.size())) + " bytes " + hex;
}

std::string quoted(const std::string& text) { return '"' + text + '"'; }

} // namespace recording

namespace krod {

using recording::host;
using recording::nameOfNextProgram;
using recording::number;
using recording::quoted;
using recording::sizeAndHash;

struct GLProgram::State {
    std::string name;
    bool reportsMissing;
};

GLProgram::GLProgram(const std::string& vertexText, const std::string& fragmentText,
                     const std::string& vertexLabel, const std::string& fragmentLabel)
    : state(new State{nameOfNextProgram(), host().reportsMissingUniforms}) {
    ++host().programsAlive;
    host().calls.add(state->name + " made");
    host().calls.add("    vertex " + quoted(vertexLabel) + ", " + sizeAndHash(vertexText));
    host().calls.add("    fragment " + quoted(fragmentLabel) + ", " + sizeAndHash(fragmentText));
}

GLProgram::~GLProgram() {
    --host().programsAlive;
    host().calls.add(state->name + " released");
}

void GLProgram::use() { host().calls.add(state->name + " use"); }

void GLProgram::setUniformValuei(const std::string& name, int value, bool reportMissing) {
    host().calls.add(state->name + " int " + name + " = " + number(value) + ", flag " +
                     VValueTrait<bool>::Text(reportMissing));
}

void GLProgram::setUniformValuef(const std::string& name, float value, bool reportMissing) {
    host().calls.add(state->name + " float " + name + " = " + VValueTrait<double>::Text(value) + ", flag " +
                     VValueTrait<bool>::Text(reportMissing));
}

bool GLProgram::reportsMissingUniforms() const noexcept { return state->reportsMissing; }

std::string Programmable::OptionalFileRead(const std::string& fileName, const std::string& builtInText) {
    host().calls.add("Programmable::OptionalFileRead(" + quoted(fileName) + ", " + sizeAndHash(builtInText) +
                     ")");
    return builtInText;
}

GLError::GLError(const std::string& label, const std::string& sourceFile, int line, unsigned code)
    : std::runtime_error(label + " | " + sourceFile + " | " + recording::number(line)), number(code) {}
GLError::~GLError() = default;

void GLError::throwPossibleError(const std::string& label, const std::string& sourceFile, int line) {
    const unsigned pending = std::exchange(host().pendingError, 0U);
    host().calls.add("GLError::throwPossibleError(" + quoted(label) + ", " + quoted(sourceFile) + ", " +
                     recording::number(line) + ")" + (pending ? ", throws" : ""));
    if (pending) throw GLError(label, sourceFile, line, pending);
}

} // namespace krod
