#include "Emit.h"
#include "Express.h"
#include "Output.h"
#include "Resolve.h"
#include "Totals.h"

#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string_view>

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kUsage =
    "usage: expgen classes DIR OUT\n"
    "       expgen list DIR\n"
    "       expgen totals DIR\n"
    "       expgen catalogue OUT DIR...\n"
    "  classes    writes the classes of the release in DIR to OUT/include and OUT/src; unchanged files are left alone\n"
    "  list       prints the names of these files, one a line\n"
    "  totals     prints what the declarations in DIR count, as lines for its release.txt\n"
    "  catalogue  writes the core's table of the releases in all DIRs to the file OUT\n"
    "DIR holds release.txt and declarations.exp, and where they differ from the declarations the dictionary's\n"
    "enumerations (dictionary_enumerations.exp) and its order (building_order.txt).\n";

class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

expgen::Release readFacts(const fs::path& directory) {
    const fs::path file = directory / "release.txt";
    return expgen::readRelease(file.string(), expgen::readFile(file));
}

expgen::Model readModel(const fs::path& directory) {
    const auto path = [&](const char* name) { return (directory / name).string(); };
    const std::string text = expgen::readFile(path("declarations.exp"));
    const expgen::SchemaDecl schema = expgen::parseSchema(path("declarations.exp"), text);
    expgen::Differences differences;
    std::string records;
    if (fs::exists(path("dictionary_enumerations.exp"))) {
        records = expgen::readFile(path("dictionary_enumerations.exp"));
        differences.enumerations = expgen::parseSchema(path("dictionary_enumerations.exp"), records);
    }
    if (fs::exists(path("building_order.txt")))
        differences.order =
            expgen::readBuildingOrder(path("building_order.txt"), expgen::readFile(path("building_order.txt")));
    return expgen::resolve(schema, differences);
}

// Only the last two parts of a path: generated files must not depend on where the sources lie.
std::string displayName(const fs::path& directory) {
    const fs::path path = fs::absolute(directory).lexically_normal();
    const fs::path clean = path.has_filename() ? path : path.parent_path();
    return (clean.parent_path().filename() / clean.filename()).generic_string();
}

expgen::Files generate(const fs::path& directory) {
    expgen::Release release = readFacts(directory);
    const expgen::Model model = readModel(directory);
    std::string wrong;
    for (const std::string& message : expgen::wrongTotals(model, release))
        wrong += (wrong.empty() ? "" : "\nexpgen: ") + directory.string() + ": " + message;
    if (!wrong.empty())
        throw std::runtime_error(wrong);
    return expgen::emit(model, {std::move(release), displayName(directory)});
}

int classes(const fs::path& directory, const fs::path& out) {
    expgen::writeChanged(generate(directory), out);
    return 0;
}

int list(const fs::path& directory) {
    for (const auto& [name, text] : generate(directory))
        std::cout << name << "\n";
    return std::cout.flush() ? 0 : 1;
}

int totals(const fs::path& directory) {
    std::cout << expgen::totalsText(readModel(directory));
    return std::cout.flush() ? 0 : 1;
}

int catalogue(const fs::path& out, const std::vector<std::string_view>& directories) {
    std::vector<expgen::Release> releases;
    for (const std::string_view directory : directories)
        releases.push_back(readFacts(directory));
    expgen::writeChanged({{out.filename().string(), expgen::emitCatalogue(releases)}}, out.parent_path());
    return 0;
}

int run(const std::vector<std::string_view>& arguments) {
    const std::string_view command = arguments.empty() ? "" : arguments[0];
    const std::size_t count = arguments.size();
    if (command == "classes" && count == 3)
        return classes(arguments[1], arguments[2]);
    if (command == "list" && count == 2)
        return list(arguments[1]);
    if (command == "totals" && count == 2)
        return totals(arguments[1]);
    if (command == "catalogue" && count >= 3)
        return catalogue(arguments[1], {arguments.begin() + 2, arguments.end()});
    throw UsageError("expected classes, list, totals or catalogue with its arguments");
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run({argv + 1, argv + argc});
    } catch (const UsageError& error) {
        std::cerr << "expgen: " << error.what() << "\n" << kUsage;
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "expgen: " << error.what() << "\n";
        return 1;
    }
}
