#pragma once
#include <VnIfcCore/VnIfcDiagnostic.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vnifc::tool {

/// The exit code of the process.
enum ExitCode : int {
    kSuccess = 0,
    kErrorsInFile = 1, ///< the file was read, with diagnostics of severity error
    kWrongUse = 2,
    kFileFailure = 3, ///< something could not be read or written
    kNotThere = 4,    ///< an instance or entity that was named does not exist
};

/// Ends a command: main prints the message and returns the exit code.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode exitCode, const std::string& message) : std::runtime_error(message), m_exitCode(exitCode) {}
    ExitCode exitCode() const noexcept { return m_exitCode; }

private:
    ExitCode m_exitCode;
};

/// The options of every command that reads a file.
struct ReadFlags {
    std::string file;     ///< "-" is standard input
    unsigned threads = 0; ///< 0: as many as the machine has
    bool quiet = false;   ///< no diagnostics
    std::string release;  ///< whose classes are taken; empty: the one that FILE_SCHEMA asks for
};

/// What is shown of an instance beside its attributes.
struct ShowOptions {
    bool json = false;
    bool inverses = false;  ///< the inverse attributes
    bool referrers = false; ///< every place where it is referred to
    bool derived = false;   ///< the derived attributes
    std::string rules;      ///< the EXPRESS text that computes them; empty: looked for (vnifc::Rules::find)
};

/// Which instances are looked for.
struct FindQuery {
    std::string entity; ///< in any case; subtypes included unless `exact`
    bool exact = false;
    std::vector<std::string> conditions; ///< "Name=Some wall"; all must hold
};

/// What is to become of attributes.
struct Changes {
    std::vector<std::string> set;   ///< "#12.Name=Some wall"
    std::vector<std::string> unset; ///< "#12.Name"
};

/// Which rules of the schema are looked at, and where they stand.
struct RuleFlags {
    std::string text;                ///< the EXPRESS text; empty: looked for (vnifc::Rules::find)
    std::vector<std::string> only;   ///< names of rules, in any case; none for all
    std::vector<std::string> except; ///< in any case
    bool explain = false;            ///< with each violation the text of the rule
};

/// How findings are printed.
struct CheckOptions {
    VN_SDAI::VnIfcDiagnostic::Severity level = VN_SDAI::VnIfcDiagnostic::kInfo; ///< the least severe that is printed
    std::uint64_t limit = 0; ///< at most so many of each kind are printed; 0 for all
    bool json = false;
    RuleFlags rules;
};

/// How a conversion is reported.
struct ConvertFlags {
    std::uint64_t limit = 0; ///< of each kind of loss at most so many are said; 0 for all
    bool json = false;       ///< the summary as JSON on standard output
};

// The commands, one per file of the same name. Data goes to standard output, messages to standard error. They return an
// exit code and throw Failure.

ExitCode info(const ReadFlags& flags, bool json);
/// `target` may be the file that is read; "-" is standard output.
ExitCode rewrite(const ReadFlags& flags, const std::string& target);
/// `address`: "#12", "12" or a GlobalId.
ExitCode show(const ReadFlags& flags, const std::string& address, const ShowOptions& options);
ExitCode find(const ReadFlags& flags, const FindQuery& query, bool json);
/// A line of JSON for each instance; `types` are entities, whose instances and those of subtypes are meant; none for
/// all.
ExitCode exportInstances(const ReadFlags& flags, const std::vector<std::string>& types, bool inverses);
/// The spatial structure, from the project down to the elements' numbers; `depth` levels below it, all if there is
/// none.
ExitCode tree(const ReadFlags& flags, std::optional<unsigned> depth, bool json);
/// Property sets and quantities of an object, its own and those of its type.
ExitCode props(const ReadFlags& flags, const std::string& address, bool json);
/// Writes nothing unless all changes can be made.
ExitCode edit(const ReadFlags& flags, const std::string& target, const Changes& changes);
/// Tells everything that is wrong with a file and with its instances.
ExitCode check(const ReadFlags& flags, const CheckOptions& options);
/// Writes a page that shows what is in the file, to be looked at in a browser. `target`: "-" is standard output; empty:
/// the file's name with .html. `rules` as in RuleFlags::text.
ExitCode reportFile(const ReadFlags& flags, const std::string& target, const std::string& rules);
/// Writes the file as one of another release; says what could not be taken over. Losses are no error.
ExitCode convertFile(const ReadFlags& flags, const std::string& target, const std::string& release,
                     const ConvertFlags& options);
/// `name` in any case; empty for the whole dictionary of the release.
ExitCode schema(const std::string& release, const std::string& name, bool json);
/// Writes index.html with the dictionary of a release into a folder, which is made when it is missing.
ExitCode schemaPage(const std::string& release, const std::string& folder);
/// "vnifc 0.2.0", and a line for each release: whether its module is installed.
std::string versionText();

} // namespace vnifc::tool
