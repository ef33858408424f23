// SPDX-License-Identifier: Apache-2.0
// plime info: what is in this file?
#include "apps/plime/commandline/Session.h"
#include "apps/plime/commands/Commands.h"
#include "apps/plime/commands/FileFacts.h"

namespace workbench {
namespace {

constexpr std::string_view Help = R"(Usage: plime info FILE [--network] [--json]

Shows what is in a file. Of a picture: size, channels, depth, what its values
mean, which parts are not read, the texts of its head, and whether it keeps the
network that made it. Of a saved network: its
objects, how they are connected, and its views. Of models and lists of points:
how much there is, and where.

  --network   prints the network that a picture keeps, or a network file in its
              usual form, for "plime run"; exit code 3 where there is none.
              Pictures keep the names of files without folders: put the network
              beside them
  --json      the same facts for scripts

Examples:
  plime info out.exr
  plime info out.exr --network > again.json
  plime info galaxy.json --json | jq '.network.objects[].name'
)";

class InfoCommand : public Command {
public:
    [[nodiscard]] std::string_view name() const noexcept override { return "info"; }
    [[nodiscard]] std::string_view purpose() const noexcept override {
        return "show what is in a picture, network or model";
    }
    [[nodiscard]] std::string_view help() const noexcept override { return Help; }
    [[nodiscard]] Syntax syntax() override {
        return {{{"--network", &onlyNetwork}, {"--json", &asJson}}, {{"FILE", &file}}, nullptr, {}};
    }

    int run(Session& session) override {
        if (onlyNetwork)
            session.streams().write(networkIn(file));
        else
            session.streams().write(asJson ? document(factsOf(file)) : textOf(factsOf(file)));
        return 0;
    }

private:
    std::string file;
    bool onlyNetwork = false, asJson = false;
};

} // namespace

std::unique_ptr<Command> makeInfoCommand() { return std::make_unique<InfoCommand>(); }

} // namespace workbench
