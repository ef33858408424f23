// SPDX-License-Identifier: Apache-2.0
#include "workbench/gl/ShaderCompiler.h"

#include "workbench/gl/PendingErrors.h"
#include "workbench/gl/ShaderFiles.h"
#include "workbench/gl/dialect/ShaderLog.h"
#include "workbench/report/Failure.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace workbench {
namespace {

/// More lines than this help nobody; of one error, drivers list every function of the name.
constexpr std::size_t MostDetails = 20, MostLinesOfOne = 12;

/// A text that has a user's file in it is numbered in that file's lines from there on.
std::vector<TextRegion> regionsOf(const std::string& text) {
    const std::optional<ShaderFileInText> file = findShaderFile(text);
    if (!file) return {};
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(file->offset);
    const int linesBefore = static_cast<int>(std::count(text.begin(), end, '\n'));
    return {{"text", linesBefore}, {file->path.string(), 0}};
}

/// What drivers say of a text without anything in it helps nobody.
std::string becauseEmpty(const std::string& text) {
    return text.find_first_not_of(" \t\r\n") == std::string::npos ? ", because the program is empty" : "";
}

/// Why the texts do not link, where it is plain without the driver's words.
std::string whyUnlinked(const ProgramTexts& texts) {
    const std::string& text = texts.fragmentText;
    if (const std::string reason = becauseEmpty(text); !reason.empty()) return "does not link" + reason;
    if (text.find("main") == std::string::npos) return "does not link, because it has no main()";
    return "does not link with " + texts.vertexLabel;
}

std::string shaderLog(GLuint shader) {
    GLint length = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
    std::string log(static_cast<std::size_t>(std::max(0, length)), '\0');
    if (!log.empty()) glGetShaderInfoLog(shader, length, &length, log.data());
    log.resize(static_cast<std::size_t>(std::max(0, length)));
    return log;
}

std::string programLog(GLuint program) {
    GLint length = 0;
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
    std::string log(static_cast<std::size_t>(std::max(0, length)), '\0');
    if (!log.empty()) glGetProgramInfoLog(program, length, &length, log.data());
    log.resize(static_cast<std::size_t>(std::max(0, length)));
    return log;
}

std::string placeText(const LogEntry& entry) {
    if (entry.line == 0) return "";
    std::string place = entry.region + " line " + std::to_string(entry.line);
    if (entry.column > 0) place += ", column " + std::to_string(entry.column);
    return place + ": ";
}

std::vector<std::string> detailsOf(const std::vector<LogEntry>& entries, const LineTable& lines) {
    std::vector<std::string> details;
    std::size_t leftOut = 0;
    for (const LogEntry& entry : entries) {
        std::size_t taken = 0;
        for (std::string& line : renderLogEntry(entry, lines)) {
            if (taken++ < MostLinesOfOne && details.size() < MostDetails)
                details.push_back(std::move(line));
            else
                ++leftOut;
        }
    }
    if (leftOut > 0) details.push_back("… and " + std::to_string(leftOut) + " further lines");
    return details;
}

/// The sentence speaks of the first error; warnings in front of it stay in the details.
Failure refusal(const std::string& label, const std::string& what, const std::string& log,
                const LineTable& lines) {
    const std::vector<LogEntry> entries = parseShaderLog(log, lines);
    const auto error = std::find_if(entries.begin(), entries.end(), [](const LogEntry& entry) {
        return entry.severity == LogSeverity::Error;
    });
    const auto first = error != entries.end() ? error : entries.begin();
    Diagnostic diagnostic{label, what, "", "", "", {}};
    diagnostic.got =
        first == entries.end() ? "no reason from the driver" : placeText(*first) + first->message;
    if (entries.size() == 1 && first->line == 0 && first->further.empty()) // the sentence says it all
        return Failure(Fault::Shader, std::move(diagnostic));
    diagnostic.details = detailsOf(entries, lines);
    return Failure(Fault::Shader, std::move(diagnostic));
}

/// A driver that has run out of memory, or lost its context, refuses texts that are right. That is no failure
/// of the text: it may compile the next time.
void requireSoundDriver(const std::string& label) {
    for (const unsigned code : takePendingErrors())
        if (code == GL_OUT_OF_MEMORY || code == GL_CONTEXT_LOST)
            throw Failure(code == GL_OUT_OF_MEMORY ? Fault::Output : Fault::OpenGL,
                          {label, "could not be compiled", "", "OpenGL error " + errorText(code), "", {}});
}

GLName compileShader(const std::string& text, const std::string& label, ShaderStage stage, bool strict) {
    const bool isVertex = stage == ShaderStage::Vertex;
    const AdaptedText adapted = adaptText(text, stage, strict, regionsOf(text));
    const std::string source = adapted.joined();
    const char* const begin = source.data();
    const GLint length = static_cast<GLint>(source.size());

    GLName shader(GLName::Kind::Shader, glCreateShader(isVertex ? GL_VERTEX_SHADER : GL_FRAGMENT_SHADER));
    glShaderSource(shader.get(), 1, &begin, &length);
    glCompileShader(shader.get());
    GLint compiled = GL_FALSE;
    glGetShaderiv(shader.get(), GL_COMPILE_STATUS, &compiled);
    if (compiled == GL_TRUE) return shader;
    requireSoundDriver(label);
    const std::string what =
        isVertex ? "does not compile as a vertex shader" : "does not compile as a fragment shader";
    throw refusal(label, what + becauseEmpty(text), shaderLog(shader.get()), adapted.lines);
}

} // namespace

GLName compileProgram(const ProgramTexts& texts, bool strict) {
    const GLName vertex = compileShader(texts.vertexText, texts.vertexLabel, ShaderStage::Vertex, strict);
    const GLName fragment =
        compileShader(texts.fragmentText, texts.fragmentLabel, ShaderStage::Fragment, strict);
    GLName program(GLName::Kind::Program, glCreateProgram());
    glAttachShader(program.get(), vertex.get());
    glAttachShader(program.get(), fragment.get());
    glLinkProgram(program.get());
    glDetachShader(program.get(), vertex.get());
    glDetachShader(program.get(), fragment.get());
    GLint linked = GL_FALSE;
    glGetProgramiv(program.get(), GL_LINK_STATUS, &linked);
    if (linked == GL_TRUE) return program;
    requireSoundDriver(texts.fragmentLabel);
    throw refusal(texts.fragmentLabel, whyUnlinked(texts), programLog(program.get()),
                  LineTable(texts.fragmentText, regionsOf(texts.fragmentText)));
}

std::string adaptedText(const std::string& text, ShaderStage stage, bool strict) {
    return adaptText(text, stage, strict).joined();
}

} // namespace workbench
