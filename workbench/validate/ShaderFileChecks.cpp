// SPDX-License-Identifier: Apache-2.0
// Level 7: shader files of users, good ones and others.
#include "workbench/gl/ShaderFiles.h"
#include "workbench/validate/CheckFunctions.h"
#include "workbench/validate/Drawing.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <functional>

#include <sys/stat.h>

namespace workbench::validate {
namespace {

namespace fs = std::filesystem;

constexpr char Good[] = "void main() { gl_FragColor = vec4(1.0, 0.0, 1.0, 1.0); }\n";

/// What becomes of a module when such a file lies where it looks for one.
enum class Effect {
    Used,    ///< it works with it
    Refused, ///< the host may say that its program does not compile
    Ignored, ///< the host does not take the file, and the module works as without one
};

/// One kind of file.
struct Form {
    const char* name;
    Effect effect;
    std::function<void(const fs::path&)> make;
};

std::function<void(const fs::path&)> holding(std::string content) {
    return
        [text = std::move(content)](const fs::path& path) { std::ofstream(path, std::ios::binary) << text; };
}

void makeSparse(const fs::path& path) {
    std::ofstream(path, std::ios::binary) << 'a';
    fs::resize_file(path, std::uintmax_t{1} << 27U);
}

const std::array<Form, 9>& forms() {
    static const std::array<Form, 9> all = {{
        {"a good file", Effect::Used, holding(Good)},
        {"a text that is no shader", Effect::Refused, holding("this is no shader")},
        {"a file of 60 KiB of blanks", Effect::Refused, holding(std::string(60U << 10U, ' '))},
        {"an empty file", Effect::Ignored, holding("")},
        {"a file of 1 MiB", Effect::Ignored, holding(std::string(1U << 20U, ' '))},
        {"a file of 128 MiB", Effect::Ignored, makeSparse},
        {"a file of bytes", Effect::Ignored, holding(std::string("\0\xff{{{{", 6))},
        {"a pipe that nobody writes to", Effect::Ignored,
         [](const fs::path& path) { static_cast<void>(::mkfifo(path.c_str(), 0600)); }},
        {"a folder", Effect::Ignored, [](const fs::path& path) { fs::create_directory(path); }},
    }};
    return all;
}

/// Draws with such a file; `plain` is the picture without one.
void drawWith(Trial& trial, RenderSession& session, const Maker& maker, krod::VObject& object,
              const Form& form, const Pixels& plain) {
    const std::string who = maker.label + ", with " + form.name + " as its shader";
    if (form.effect != Effect::Refused) {
        Pixels picture;
        const bool done = worksWell(trial, who, object, [&] { picture = draw(session, object, {}, 8, 8); });
        trial.require(form.effect == Effect::Used || !done || sameBits(picture, plain),
                      who + ": draws another picture than without it");
        return;
    }
    try {
        static_cast<void>(draw(session, object, {}, 8, 8));
    } catch (const Failure& failure) {
        trial.require(failure.fault() == Fault::Shader || mayRefuse(object, failure),
                      who + ": throws \"" + failure.what() + '"');
    }
}

} // namespace

void checkShaderFiles(Trial& trial) {
    const Guest guest(trial);
    const auto session = openSession(trial);
    const Ears ears;
    forEachDrawing(guest, [&](const Maker& maker, krod::VObject& object) {
        Pixels plain;
        setShaderFolders({});
        if (!worksWell(trial, maker.label, object, [&] { plain = draw(*session, object, {}, 8, 8); })) return;
        for (const Form& form : forms()) {
            const Folder folder;
            for (const std::string& name : askedShaderFiles())
                if (fs::path(name).filename() == name) form.make(folder.path() / name);
            setShaderFolders({folder.path()});
            drawWith(trial, *session, maker, object, form, plain);
        }
    });
}

} // namespace workbench::validate
