#include "cli/wrongCallSentence.h"

#include <vector>

#include "cli/nearestWord.h"

namespace kestrav {
namespace {

/// The command that was being read when it stopped.
const CLI::App& innermost(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? app : innermost(*chosen.front());
}

std::string fullName(const CLI::App& app) {
    return app.get_parent() == nullptr ? app.get_name() : fullName(*app.get_parent()) + " " + app.get_name();
}

std::vector<std::string> knownWords(const CLI::App& app, bool options) {
    std::vector<std::string> known;
    if (options) {
        for (const CLI::Option* option : app.get_options())
            for (const std::string& name : option->get_lnames())
                known.push_back("--" + name);
        return known;
    }
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        known.push_back(command->get_name());
    return known;
}

std::string wordSentence(const CLI::App& app, const std::string& word) {
    const bool isOption = word.starts_with('-');
    const auto commands = knownWords(app, false);
    const std::string nearest = nearestWord(word, isOption ? knownWords(app, true) : commands);
    const std::string what = isOption                      ? " is not an option of " + fullName(app)
                             : commands.empty()            ? " is one word too many for " + fullName(app)
                             : app.get_parent() == nullptr ? " is not a command"
                                                           : " is not a command of " + fullName(app);
    return "'" + word + "'" + what + "." + (nearest.empty() ? "" : " Did you mean '" + nearest + "'?");
}

/// Words that nobody took, in the order in which they stand.
std::vector<std::string> leftOver(const CLI::App& app) {
    std::vector<std::string> words = app.remaining();
    if (words.empty() && app.get_parent() != nullptr) return leftOver(*app.get_parent());
    return words;
}

std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> words = leftOver(app);
    const bool aboutWords = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr ||
                            dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    if (aboutWords && !words.empty()) return wordSentence(app, words.front());
    if (!knownWords(app, false).empty() && dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
        return "A command is missing.";
    const std::string said = error.what();
    return said.ends_with('.') ? said : said + ".";
}

}  // namespace

std::string wrongCallSentence(const CLI::App& commandLine, const CLI::ParseError& error) {
    const CLI::App& app = innermost(commandLine);
    return whatIsWrong(app, error) + " See '" + fullName(app) + " --help'.";
}

}  // namespace kestrav
