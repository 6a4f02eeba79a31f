// The translation table that ships with Montala, read with the host's own XML
// reader, checked against itself and against the sources: every text the code
// hands to translation must have an entry, and every entry must be whole in
// every language the table declares.

#include "sim/session/XmlElement.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace montala::host::test {
namespace {

namespace fs = std::filesystem;
using sim::XmlElement;

const std::vector<std::string> languages = {"us", "de", "fr", "es", "it", "pt", "jp", "zh", "ru"};

struct Table {
    std::unique_ptr<XmlElement> root;
    // English key -> language -> text.
    std::map<std::string, std::map<std::string, std::string>> entries;
};

Table readTable()
{
    Table table;
    std::string error;
    table.root = XmlElement::parseFile(MONTALA_SOURCE_DIR "/resources/translation.xml", error);
    EXPECT_TRUE(table.root) << error;
    if (!table.root)
        return table;
    if (const XmlElement* strings = table.root->child("StringTable")) {
        for (const auto& entry : strings->children()) {
            const std::string* key = entry->attribute("Key");
            if (!key)
                continue;
            EXPECT_EQ(table.entries.count(*key), 0u) << "the key \"" << *key << "\" is there twice";
            auto& texts = table.entries[*key];
            for (const auto& text : entry->children()) {
                EXPECT_EQ(texts.count(text->name()), 0u) << "\"" << *key << "\" has <" << text->name() << "> twice";
                texts[text->name()] = text->text();
            }
        }
    }
    return table;
}

// The printf-style conversions of a text ("%s", "%d", "%%"), in order.
std::vector<std::string> placeholders(const std::string& text)
{
    static const std::regex conversion("%[-+ #0-9.]*[a-zA-Z%]");
    std::vector<std::string> found;
    for (auto it = std::sregex_iterator(text.begin(), text.end(), conversion); it != std::sregex_iterator(); ++it)
        found.push_back(it->str());
    std::sort(found.begin(), found.end());
    return found;
}

std::string leadingBlanks(const std::string& text)
{
    return text.substr(0, text.find_first_not_of(' '));
}

std::string trailingBlanks(const std::string& text)
{
    const size_t last = text.find_last_not_of(' ');
    return last == std::string::npos ? text : text.substr(last + 1);
}

bool blank(const std::string& text)
{
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

struct SourceText {
    std::string text;
    std::string where; // file:line
};

// The string literals of a source file, adjacent ones joined as the compiler
// joins them, with escapes resolved; comments, character literals and raw
// strings are stepped over.
struct Literal {
    std::string text;
    bool wide = false;      // u"..."
    bool translated = false; // the first argument of translate(...) or translated(...)
    size_t line = 0;
};

std::vector<Literal> literalsOf(const std::string& source)
{
    std::vector<Literal> literals;
    size_t line = 1;
    size_t i = 0;
    const auto at = [&](size_t k) { return k < source.size() ? source[k] : '\0'; };
    const auto isWord = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
    // Reads the body of a literal opened at `i` (on the quote); leaves `i` behind it.
    const auto body = [&]() {
        std::string text;
        for (++i; i < source.size() && source[i] != '"'; ++i) {
            char c = source[i];
            if (c == '\n')
                ++line;
            if (c == '\\' && i + 1 < source.size()) {
                c = source[++i];
                text += c == 'n' ? '\n' : c == 't' ? '\t' : c == 'r' ? '\r' : c;
            } else {
                text += c;
            }
        }
        ++i;
        return text;
    };
    while (i < source.size()) {
        const char c = source[i];
        if (c == '\n') {
            ++line;
            ++i;
        } else if (c == '/' && at(i + 1) == '/') {
            i = source.find('\n', i);
        } else if (c == '/' && at(i + 1) == '*') {
            const size_t close = source.find("*/", i + 2);
            line += std::count(source.begin() + i, source.begin() + std::min(close, source.size()), '\n');
            i = close == std::string::npos ? source.size() : close + 2;
        } else if (c == '\'' && !(i > 0 && isWord(source[i - 1]))) {
            for (++i; i < source.size() && source[i] != '\''; ++i)
                if (source[i] == '\\')
                    ++i;
            ++i;
        } else if (c == 'R' && at(i + 1) == '"' && !(i > 0 && isWord(source[i - 1]) && source[i - 1] != 'u')) {
            const size_t open = source.find('(', i);
            const std::string close = ")" + source.substr(i + 2, open - i - 2) + "\"";
            const size_t end = source.find(close, open);
            line += std::count(source.begin() + i, source.begin() + std::min(end, source.size()), '\n');
            i = end == std::string::npos ? source.size() : end + close.size();
        } else if (c == '"') {
            Literal literal;
            literal.line = line;
            literal.wide = i > 0 && source[i - 1] == 'u' && !(i > 1 && isWord(source[i - 2]));
            // What stands before it: "translate(" or "translated(".
            size_t before = literal.wide ? i - 1 : i;
            while (before > 0 && std::isspace(static_cast<unsigned char>(source[before - 1])))
                --before;
            if (before > 0 && source[before - 1] == '(') {
                size_t nameEnd = before - 1;
                while (nameEnd > 0 && std::isspace(static_cast<unsigned char>(source[nameEnd - 1])))
                    --nameEnd;
                size_t nameStart = nameEnd;
                while (nameStart > 0 && isWord(source[nameStart - 1]))
                    --nameStart;
                const std::string name = source.substr(nameStart, nameEnd - nameStart);
                literal.translated = name == "translate" || name == "translated";
            }
            literal.text = body();
            // Adjacent literals are one text.
            for (;;) {
                size_t next = i;
                while (next < source.size() && std::isspace(static_cast<unsigned char>(source[next])))
                    ++next;
                if (at(next) == 'u' && at(next + 1) == '"')
                    ++next;
                if (at(next) != '"')
                    break;
                line += std::count(source.begin() + i, source.begin() + next, '\n');
                i = next;
                literal.text += body();
            }
            literals.push_back(std::move(literal));
        } else {
            ++i;
        }
    }
    return literals;
}

// Texts the sources hand to translation. Two ways are recognised:
//  - a literal written straight into a call of translate or of a helper
//    named translated: translate(u"..."), translated("...");
//  - any wide literal with a letter in it, in a file that translates: wide
//    text is kept for paths and user-visible messages, and messages are
//    often picked in a switch or passed through a small helper before the
//    one call of translate.
std::vector<SourceText> textsPassedToTranslate()
{
    static const std::regex anyCall(R"(\btranslated?\s*\()");
    static const std::regex letter("[A-Za-z]");
    std::vector<SourceText> texts;
    for (const char* layer : {"util", "core", "host", "gui", "app", "studio"}) {
        const fs::path folder = fs::path(MONTALA_SOURCE_DIR) / layer;
        if (!fs::exists(folder))
            continue;
        for (const auto& file : fs::recursive_directory_iterator(folder)) {
            const std::string extension = file.path().extension().string();
            if (!file.is_regular_file() || (extension != ".cpp" && extension != ".h"))
                continue;
            std::ifstream in(file.path(), std::ios::binary);
            std::stringstream content;
            content << in.rdbuf();
            const std::string source = content.str();
            if (!std::regex_search(source, anyCall))
                continue;
            const std::string name = fs::relative(file.path(), MONTALA_SOURCE_DIR).generic_string();
            for (const Literal& literal : literalsOf(source)) {
                if (literal.translated || (literal.wide && std::regex_search(literal.text, letter)))
                    texts.push_back({literal.text, name + ":" + std::to_string(literal.line)});
            }
        }
    }
    return texts;
}

TEST(TranslationTable, DeclaresTheNineLanguagesAndHasEveryEntryWholeInEach)
{
    const Table table = readTable();
    ASSERT_TRUE(table.root);
    EXPECT_EQ(table.root->name(), "Translation");
    const XmlElement* languageTable = table.root->child("LanguageTable");
    ASSERT_NE(languageTable, nullptr);
    std::vector<std::string> declared;
    for (const auto& language : languageTable->children()) {
        EXPECT_EQ(language->name(), "language");
        const std::string* key = language->attribute("key");
        ASSERT_NE(key, nullptr);
        EXPECT_FALSE(blank(language->text())) << "language " << *key << " has no name";
        declared.push_back(*key);
    }
    EXPECT_EQ(declared, languages);

    ASSERT_FALSE(table.entries.empty());
    for (const auto& [key, texts] : table.entries) {
        SCOPED_TRACE("key \"" + key + "\"");
        EXPECT_FALSE(blank(key));
        EXPECT_EQ(texts.count("us"), 0u) << "English is the key itself";
        for (const auto& [language, text] : texts)
            EXPECT_NE(std::find(languages.begin(), languages.end(), language), languages.end())
                << "<" << language << "> is no language of the table";
        for (size_t i = 1; i < languages.size(); ++i) {
            const std::string& language = languages[i];
            const auto found = texts.find(language);
            if (found == texts.end()) {
                ADD_FAILURE() << "no <" << language << ">";
                continue;
            }
            const std::string& text = found->second;
            EXPECT_FALSE(blank(text)) << "<" << language << "> is empty";
            // The program fills in and joins on these, so they must be there
            // in every language: placeholders, and the blanks at either end
            // that separate a label from the name written after it.
            EXPECT_EQ(placeholders(text), placeholders(key)) << "<" << language << ">: " << text;
            EXPECT_EQ(leadingBlanks(text), leadingBlanks(key)) << "<" << language << ">: \"" << text << "\"";
            EXPECT_EQ(trailingBlanks(text), trailingBlanks(key)) << "<" << language << ">: \"" << text << "\"";
            if (key.find("Montala") != std::string::npos)
                EXPECT_NE(text.find("Montala"), std::string::npos)
                    << "<" << language << "> loses the product's name: " << text;
        }
    }
}

TEST(TranslationTable, HasAnEntryForEveryTextTheSourcesTranslate)
{
    const Table table = readTable();
    ASSERT_TRUE(table.root);
    const std::vector<SourceText> texts = textsPassedToTranslate();

    // The scan itself must work, or this test would pass on nothing.
    const auto scanned = [&](const std::string& text) {
        return std::any_of(texts.begin(), texts.end(), [&](const SourceText& found) { return found.text == text; });
    };
    EXPECT_TRUE(scanned("Healed Event")) << "a literal inside translate(...)";
    EXPECT_TRUE(scanned("Detected uninitialized timecode.")) << "a message picked in a switch";
    EXPECT_TRUE(scanned("Audio snippet in ")) << "a literal given to translated(...)";

    for (const SourceText& found : texts)
        EXPECT_EQ(table.entries.count(found.text), 1u)
            << found.where << ": \"" << found.text << "\" has no entry in resources/translation.xml";
}

} // namespace
} // namespace montala::host::test
