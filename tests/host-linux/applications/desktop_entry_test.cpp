#include "platform/linux/applications/desktop_entry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/linux/applications/desktop_locale.h"

namespace purlock::host_linux {
namespace {

using Texts = std::vector<std::string>;

struct LocaleRow {
    const char* name;
    const char* locale;
    Texts suffixes;
};

class LocaleSuffixes : public ::testing::TestWithParam<LocaleRow> {};

TEST_P(LocaleSuffixes, FollowTheSpecificationsOrder) {
    EXPECT_EQ(localeSuffixes(GetParam().locale), GetParam().suffixes);
}

const LocaleRow localeRows[] = {
    {"LanguageAlone", "de", {"de"}},
    {"LanguageAndCountry", "de_AT", {"de_AT", "de"}},
    {"TheEncodingDoesNotCount", "de_AT.UTF-8", {"de_AT", "de"}},
    {"LanguageAndModifier", "sr@latin", {"sr@latin", "sr"}},
    {"All", "sr_RS.UTF-8@latin", {"sr_RS@latin", "sr_RS", "sr@latin", "sr"}},
    {"C", "C", {}},
    {"CWithAnEncoding", "C.UTF-8", {}},
    {"Posix", "POSIX", {}},
    {"Empty", "", {}},
};

INSTANTIATE_TEST_SUITE_P(Rows, LocaleSuffixes, ::testing::ValuesIn(localeRows),
                         [](const auto& row) { return row.param.name; });

struct NameRow {
    const char* name;
    const char* keys;
    const char* locale;
    std::optional<std::string> expected;
};

class DesktopEntryNames : public ::testing::TestWithParam<NameRow> {};

TEST_P(DesktopEntryNames, AreInTheReadersLanguage) {
    const Texts suffixes = localeSuffixes(GetParam().locale);
    const std::string text = std::string("[Desktop Entry]\nType=Application\n") + GetParam().keys;
    EXPECT_EQ(parseDesktopEntry(text, suffixes).name, GetParam().expected);
}

constexpr const char* names =
    "Name=Music\nName[de]=Musik\nName[de_AT]=Musi\nName[sr]=Музика\nName[sr@latin]=Muzika\nGenericName=Player\n";

const NameRow nameRows[] = {
    {"WithoutALocale", names, "C", "Music"},
    {"ExactMatch", names, "de_AT.UTF-8", "Musi"},
    {"TheLanguageForAnotherCountry", names, "de_DE.UTF-8", "Musik"},
    {"TheModifierBeforeTheLanguage", names, "sr_RS@latin", "Muzika"},
    {"AnotherLanguage", names, "fr_FR", "Music"},
    {"OrderInTheFileDoesNotMatter", "Name[de]=Musik\nName=Music\n", "de", "Musik"},
    {"OnlyAnotherLanguage", "Name[fr]=Musique\n", "de", std::nullopt},
    {"None", "Exec=x\n", "de", std::nullopt},
    {"Empty", "Name=\n", "C", std::nullopt},
    {"AnEmptyTranslationIsNone", "Name=Music\nName[de]=\n", "de", "Music"},
    {"BlanksAroundTheEqualsSign", "Name = Music \n", "C", "Music"},
    {"Escapes", "Name=A\\sB\\\\C\\x\n", "C", "A B\\C\\x"},
    {"CarriageReturns", "Name=Music\r\n", "C", "Music"},
    {"BrokenBrackets", "Name=Music\nName[de=Musik\nNamede]=Musik\nName[]=x\n", "de", "Music"},
    {"NoLineEnd", "Name=Music", "C", "Music"},
    {"AnotherGroupDoesNotCount", "Exec=x\n[Desktop Action New]\nName=New Window\n", "C", std::nullopt},
    {"ACommentDoesNotCount", "#Name=Music\n", "C", std::nullopt},
    {"MalformedTextIsRepaired", "Name=Mus\xFFic\n", "C", "Mus\xEF\xBF\xBDic"},
};

INSTANTIATE_TEST_SUITE_P(Rows, DesktopEntryNames, ::testing::ValuesIn(nameRows),
                         [](const auto& row) { return row.param.name; });

struct CommandRow {
    const char* name;
    const char* command;
    std::optional<std::string> expected;
};

class ExecutableOfCommand : public ::testing::TestWithParam<CommandRow> {};

TEST_P(ExecutableOfCommand, IsItsFirstWord) {
    EXPECT_EQ(executableOfCommand(GetParam().command), GetParam().expected);
}

const CommandRow commandRows[] = {
    {"OneWord", "mpv", "mpv"},
    {"WithArguments", "mpv --player-operation-mode=pseudo-gui -- %U", "mpv"},
    {"WithAPath", "/opt/tidal-hifi/tidal-hifi %U", "/opt/tidal-hifi/tidal-hifi"},
    {"Quoted", "\"/opt/My Player/player\" %F", "/opt/My Player/player"},
    {"EscapedInQuotes", "\"/opt/a\\\"b\\$c/player\"", "/opt/a\"b$c/player"},
    {"PastEnv", "env LANG=C GDK_BACKEND=x11 spotify %U", "spotify"},
    {"PastEnvWithAPathAndOptions", "/usr/bin/env -i A=1 spotify", "spotify"},
    {"NothingAfterEnv", "env A=1", std::nullopt},
    {"Empty", "", std::nullopt},
    {"Blanks", "  \t ", std::nullopt},
    {"AnOpenQuote", "\"mpv", "mpv"},
};

INSTANTIATE_TEST_SUITE_P(Rows, ExecutableOfCommand, ::testing::ValuesIn(commandRows),
                         [](const auto& row) { return row.param.name; });

TEST(DesktopEntry, ReadsItsSwitchesAndPrograms) {
    const DesktopEntry entry = parseDesktopEntry(
        "# a comment\n[Desktop Entry]\nType=Application\nNoDisplay=true\nHidden=true\nTryExec=/usr/bin/xterm\n"
        "Exec=xterm -ls\nCategories=System;TerminalEmulator;\n",
        {});
    EXPECT_EQ(entry, (DesktopEntry{std::nullopt, {"/usr/bin/xterm", "xterm"}, true, true, true, true}));
}

TEST(DesktopEntry, OfAnotherKindIsNoApplication) {
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Link\nName=x\n", {}).isApplication);
    EXPECT_EQ(parseDesktopEntry("", {}), DesktopEntry{});
    EXPECT_EQ(parseDesktopEntry("[Other]\nType=Application\n", {}), DesktopEntry{});
}

}  // namespace
}  // namespace purlock::host_linux
