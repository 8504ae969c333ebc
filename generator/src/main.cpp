#include "Emit.h"
#include "Output.h"
#include "Express.h"
#include "Resolve.h"
#include "Totals.h"

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string_view>

namespace {

constexpr std::string_view kUsage =
    "usage: expgen --schema FILE --enumerations FILE --order FILE (--out DIR | --list)\n"
    "  --schema        EXPRESS text of the schema\n"
    "  --enumerations  EXPRESS text of the dictionary's enumerations\n"
    "  --order         names in the dictionary's building order, one a line\n"
    "  --out           directory for include/IFC4X3/*.h and src/*.cpp; unchanged files are left alone\n"
    "  --list          print the names of these files instead, one a line\n";

struct Options {
    std::string schema;
    std::string enumerations;
    std::string order;
    std::string out;
    bool list = false;
};

class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

Options readOptions(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        if (name == "--list") {
            options.list = true;
            continue;
        }
        std::string* const value = name == "--schema"         ? &options.schema
                                   : name == "--enumerations" ? &options.enumerations
                                   : name == "--order"        ? &options.order
                                   : name == "--out"          ? &options.out
                                                              : nullptr;
        if (value == nullptr || ++i == argc) {
            throw UsageError("unknown option or option without value: " + std::string(name));
        }
        *value = argv[i];
    }
    if (options.schema.empty() || options.enumerations.empty() || options.order.empty()) {
        throw UsageError("--schema, --enumerations and --order are needed");
    }
    if (options.out.empty() != options.list) {
        throw UsageError("one of --out and --list is needed");
    }
    return options;
}

// Only the last two parts of a path: generated files must not depend on where the sources lie.
std::string displayName(const std::filesystem::path& path) {
    return (path.parent_path().filename() / path.filename()).generic_string();
}

expgen::Model readModel(const Options& options) {
    const std::string schema = expgen::readFile(options.schema);
    const std::string enumerations = expgen::readFile(options.enumerations);
    const std::string order = expgen::readFile(options.order);
    return expgen::resolve(expgen::parseSchema(options.schema, schema),
                           expgen::parseSchema(options.enumerations, enumerations),
                           expgen::readBuildingOrder(options.order, order));
}

int run(const Options& options) {
    const expgen::Model model = readModel(options);
    const std::vector<std::string> wrong = expgen::wrongTotals(model);
    for (const std::string& message : wrong) {
        std::cerr << "expgen: " << options.schema << ": " << message << "\n";
    }
    if (!wrong.empty()) {
        return 1;
    }
    const expgen::Files files = expgen::emit(
        model, {displayName(options.schema), displayName(options.enumerations), displayName(options.order)});
    if (!options.list) {
        expgen::writeChanged(files, options.out);
        return 0;
    }
    for (const auto& [name, text] : files) {
        std::cout << name << "\n";
    }
    return std::cout.flush() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(readOptions(argc, argv));
    } catch (const UsageError& error) {
        std::cerr << "expgen: " << error.what() << "\n" << kUsage;
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "expgen: " << error.what() << "\n";
        return 1;
    }
}
