#include "Commands.h"
#include "DictionaryRecord.h"
#include "LoadedFile.h"
#include "Messages.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cstdio>
#include <functional>
#include <memory>

namespace vnifc {

namespace {

/// What the command line asks for.
using Task = std::function<ExitCode()>;

void addReadFlags(CLI::App& command, ReadFlags& flags) {
    command.add_option("FILE", flags.file, "exchange file; - is standard input")->required();
    command.add_option("--threads", flags.threads, "number of threads; as many as the machine has by default")
        ->check(CLI::Range(1, 256));
    command.add_flag("--quiet", flags.quiet, "print no diagnostics");
}

void addInfo(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        bool json = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("info", "Tell what a file holds, and what reading it costs");
    command->footer("Example:\n  vnifc info house.ifc");
    addReadFlags(*command, *options);
    command->add_flag("--json", options->json, "print one JSON object");
    command->callback([&task, options] { task = [options] { return info(*options, options->json); }; });
}

void addRewrite(CLI::App& app, Task& task) {
    struct Options : ReadFlags {
        std::string target;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("rewrite", "Read a file, write it back and tell what could not be taken");
    command->footer("Example:\n  vnifc rewrite house.ifc copy.ifc");
    addReadFlags(*command, *options);
    command->add_option("OUT", options->target, "file to write, may be FILE; - is standard output")->required();
    command->callback([&task, options] { task = [options] { return rewrite(*options, options->target); }; });
}

void addSchema(CLI::App& app, Task& task) {
    struct Options {
        std::string name;
        bool json = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("schema", "Show the schema's dictionary or one declaration of it");
    command->footer("Example:\n  vnifc schema IfcWall");
    command->add_option("NAME", options->name, "an entity or a type, in any case; everything by default");
    command->add_flag("--json", options->json, "print JSON, in the order in which the dictionary was built");
    command->callback([&task, options] { task = [options] { return schema(options->name, options->json); }; });
}

std::string versionText() {
    const VN_SDAI::VnModule module = loadSchemaModule();
    const VN_SDAI::VnIfcSchema& schema = *module.schema();
    return fmt::format("vnifc {}\nschema {} version {}", VNIFC_VERSION, schema.name().constStr(), versionOf(schema));
}

int run(int argc, char** argv) {
    Task task;
    CLI::App app("vnifc reads, shows and writes IFC4X3 files (ISO 16739) in the exchange format of ISO 10303-21.",
                 "vnifc");
    app.footer("Exit codes: 0 success, 1 errors in a file, 2 wrong use, 3 something cannot be read or written\n"
               "Example:\n  vnifc info house.ifc");
    app.set_version_flag("--version", versionText, "Print the versions of program and schema");
    app.require_subcommand(1);
    addInfo(app, task);
    addRewrite(app, task);
    addSchema(app, task);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& end) {
        return app.exit(end) == 0 ? kSuccess : kWrongUse;
    }
    return task();
}

} // namespace

} // namespace vnifc

int main(int argc, char** argv) {
    try {
        const int exitCode = vnifc::run(argc, argv);
        // A full disk may not show before the last of the output goes there.
        if (std::fflush(stdout) == 0 && !std::ferror(stdout))
            return exitCode;
        vnifc::say("vnifc: cannot write standard output");
    } catch (const vnifc::Failure& failure) {
        vnifc::say(std::string("vnifc: ") + failure.what());
        return failure.exitCode();
    } catch (const std::exception& error) {
        vnifc::say(std::string("vnifc: ") + error.what());
    }
    return vnifc::kFileFailure;
}
