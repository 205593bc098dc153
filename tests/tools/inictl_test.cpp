// SPDX-License-Identifier: MIT
#include "support/test.h"

// The program inictl, run as its users run it.

// What a command of the shell in a folder writes to both streams, and its status.
static std::pair<std::string, int> Shell(const TempFolder& folder, const std::string& command) {
    const std::string line = "cd '" + folder.Native().string() + "'; export TERM=dumb PATH='" +
                             fs::path(INICTL).parent_path().string() + "':\"$PATH\"; { " + command +
                             "\n} 2>&1";
    std::FILE* const pipe = popen(line.c_str(), "r");
    std::string output;
    for (int c; (c = std::fgetc(pipe)) != EOF;)
        output += static_cast<char>(c);
    const int status = pclose(pipe);
    return {output, WIFEXITED(status) ? WEXITSTATUS(status) : -1};
}

static const std::string utf8 =
    "# Цены — ₽\n[магазин]\n  имя = Müller\n\n[log]\nlevel=2\nlevel=3";
static const std::string cp1251 = "[s]\r\n10=a\r\n2=b\r\nk = ё\r\nfree\r\n[t] tail\r\n"_cp1251;

TEST(InictlTest, CommandsAnswerAndChangeWhatTheySay) {
    const Variable language("LC_ALL", "en_US.UTF-8");
    const auto changed = [](std::string text, const std::string& from, const std::string& to) {
        return text.replace(text.find(from), from.size(), to);
    };
    const std::string lacks = "inictl: The encoding of the INI file lacks a character of this text\n";
    const struct {
        std::string command, output;
        int status;
        std::string text = ""; // what u.ini has become, if anything
    } cases[] = {
        {"inictl get u.ini Магазин имя; inictl get - log level <u.ini", "Müller\n2\n", 0},
        {"inictl get u.ini log none --default=' x'; inictl get u.ini log none",
         " x\ninictl: no such entry: [log] none\n", 1},
        {"inictl get none a b", "inictl: none: No such file or directory\n", 4},
        {"inictl has u.ini LOG && inictl has u.ini log level && ! inictl has u.ini log x", "", 0},
        {"inictl list u.ini", "[магазин]\nимя=Müller\n[log]\nlevel=2\nlevel=3\n", 0},
        {"inictl list u.ini --sections; inictl list c.ini S --keys", "магазин\nlog\n10\n2\nk\n", 0},
        {"inictl list u.ini --format=tsv", "магазин\tимя\tMüller\nlog\tlevel\t2\nlog\tlevel\t3\n", 0},
        {"inictl list u.ini log --format json", "{\n  \"level\": \"2\"\n}\n", 0},
        {"LC_ALL=ru_RU.KOI8-R inictl list c.ini s --format json",
         "{\n  \"10\": \"a\",\n  \"2\": \"b\",\n  \"k\": \"\\u0451\"\n}\n", 0},
        {"inictl set u.ini log q \"a'b\" && eval \"$(inictl list u.ini --format=sh)\" && echo "
         "$log_q$log_level",
         "a'b3\n", 0, changed(utf8, "level=3", "level=3\nq=a'b")},
        {"inictl list u.ini nowhere", "inictl: no such entry: [nowhere] \n", 1},
        {"inictl set u.ini магазин цена '100 ₽' --comment='с ноября'", "", 0,
         changed(utf8, "Müller\n", "Müller\n;с ноября\n  цена = 100 ₽\n")},
        {"inictl set u.ini log level 2 && stat -c %h u.ini && ls -A", "1\nc.ini\nu.ini\n", 0},
        {"inictl set u.ini log level -5 --backup && ls", "c.ini\nu.ini\nu.ini.bak\n", 0,
         changed(utf8, "level=2", "level=-5")},
        {"inictl set u.ini new k v --dry-run",
         "--- u.ini\n+++ u.ini\n@@ -4,4 +4,7 @@\n \n [log]\n level=2\n-level=3\n"
         "\\ No newline at end of file\n+level=3\n+\n+[new]\n+k=v\n\\ No newline at end of file\n",
         0},
        {"inictl set - a b c </dev/null; inictl set new.ini a b '₽' && cat new.ini",
         "[a]\nb=c\n[a]\nb=₽\n", 0},
        {"inictl set u.ini log 'a=b' c", "inictl: This text would be read from the INI file as another one\n",
         3},
        {"inictl set c.ini s k ₽; inictl set none.ini s k ₽ --encoding=cp1251; ls",
         lacks + lacks + "c.ini\nu.ini\n", 0},
        {"inictl set c.ini s n '1 ₽' --lossy && inictl get c.ini s n", "1 ?\n", 0},
        {"inictl delete u.ini log x; inictl delete u.ini x",
         "inictl: no such entry: [log] x\ninictl: no such entry: [x] \n", 1},
        {"inictl delete u.ini log level", "", 0, changed(utf8, "\nlevel=2\nlevel=3", "")},
        {"inictl delete u.ini log", "", 0, utf8.substr(0, utf8.find("[log]"))},
        {"inictl rename u.ini магазин 店 && inictl rename u.ini 店 имя név", "", 0,
         changed(changed(utf8, "магазин", "店"), "имя", "név")},
        {"inictl rename u.ini log магазин", "inictl: The INI file has this name already\n", 3},
        {"inictl merge u.ini c.ini --dry-run | grep -c '^+[^+]'; inictl merge c.ini u.ini", "5\n" + lacks, 3},
        {"inictl diff u.ini u.ini && printf '[log]\\nlevel=4\\n' | inictl diff u.ini -",
         "[магазин]\n-имя=Müller\n[log]\n-level=2\n+level=4\n", 1},
        {"inictl diff c.ini u.ini --format=edit >e; inictl convert c.ini --to=utf-8; "
         "inictl edit c.ini <e && inictl diff c.ini u.ini",
         "", 0},
        {"printf 'set log level 9 # note\\n\\ndelete log \"le vel\"\\n' | inictl edit u.ini",
         "inictl: line 3: no such entry: [log] le vel\n", 1},
        {"printf 'set a b \"c\\n' | inictl edit u.ini; printf 'move a b' | inictl edit u.ini",
         "inictl: line 1: a quote is not closed\ninictl: line 1: no command: move\n", 2},
        {"printf 'rename log Log\\nset Log \"a b\" \"c\\\\\"d\" note\\ndelete магазин' | inictl edit u.ini",
         "", 0, "# Цены — ₽\n[Log]\nlevel=2\nlevel=3\n;note\na b=c\"d"},
        {"inictl convert u.ini --to=utf-16le; inictl check u.ini|head -1; inictl convert u.ini --to=utf-8",
         "encoding: utf-16le, with a mark\n", 0, utf8},
        {"inictl convert u.ini --to=cp1251", lacks, 3},
        {"inictl convert u.ini --to=cp1251 --lossy --dry-run | grep '^[+]'",
         "+++ u.ini\n+# Цены — ?\n+  имя = M?ller\n", 0},
        {"inictl set c.ini s k e --classic && inictl list c.ini S", "2=b\n10=a\nk=ё\nk=e\n", 0},
        {"inictl check c.ini",
         "encoding: cp1251, without a mark\n5: free text: no pair, comment or header\n6: text behind \"]\"\n"
         "line ends: CR LF (6)\nlines that a save with --classic would change or remove: 2\n",
         1},
        {"inictl; inictl get u.ini a; inictl get u.ini a b c; inictl get u.ini a b --keys",
         "inictl: no command, see inictl --help\n"
         "inictl: the command get needs more words, see inictl --help\n"
         "inictl: one word too many: c (put one with blanks into quotes)\n"
         "inictl: this command takes no option --keys\n",
         2},
        {"LC_ALL=de_DE.UTF-8 inictl x; LC_ALL=ru_RU.UTF-8 inictl x; inictl list u.ini --format=x",
         "inictl: unbekannter Befehl x, siehe inictl --help\n"
         "inictl: неизвестная команда x, смотрите inictl --help\ninictl: unknown format: x\n",
         2},
        {"inictl --help | head -1 && inictl get --version",
         "inictl: INI files in which nothing changes but what was asked for\ninictl " INICTL_VERSION "\n", 0},
        {"mkdir d && inictl get d a b; inictl list u.ini >/dev/full",
         "inictl: Error opening the file: Access denied.\ninictl: No space left on device\n", 4},
        {"for i in 1 2 3 4 5 6; do inictl set u.ini log k$i $i & done; wait; LC_ALL=C sort -o u.ini u.ini",
         "", 0,
         "\n  имя = Müller\n# Цены — ₽\n"
         "[log]\n[магазин]\nk1=1\nk2=2\nk3=3\nk4=4\nk5=5\nk6=6\nlevel=2\nlevel=3\n"},
    };
    for (const auto& [command, output, status, text] : cases) {
        const TempFolder folder;
        folder.Write("u.ini", utf8);
        folder.Write("c.ini", cp1251);
        EXPECT_EQ(Shell(folder, command), std::pair(output, status)) << command;
        EXPECT_EQ(text.empty() ? utf8 : text, folder.Read("u.ini")) << command;
    }
}

TEST(InictlTest, ATerminalSeesHowFarAMergeIs) {
    const TempFolder folder;
    std::string text;
    for (int i = 0; i < 2000; ++i)
        text += "[section " + std::to_string(i) + "]\nkey=" + std::string(3000, 'v') + "\n";
    folder.Write("big.ini", text);
    const std::string shown =
        Shell(folder, "script -qc 'inictl merge new.ini big.ini' /dev/null </dev/null").first;
    EXPECT_TRUE(shown.find(" 50 %") != shown.npos && shown.ends_with("\r\x1b[K")) << shown.substr(0, 200);
    EXPECT_EQ(text.size() + 1999, folder.Read("new.ini").size());
}

TEST(InictlTest, ShellsCompleteNamesOfTheFile) {
    const Variable language("LC_ALL", "C.UTF-8");
    const TempFolder folder;
    folder.Write("u.ini", "[main $(touch x)]\nlevel high=1\n[log]\nwidth=2\n");
    const std::pair<std::string, const char*> cases[] = {
        {"inictl ge\tu\tlo\twi\t", "width "},
        {"inictl set u.ini --dr\tma\tle\t", "level\\ high "},
        {"inictl list u.ini --format=js\t", "--format=json"}};
    const std::pair<std::string, std::string> shells[] = {
        {"bash --norc --noprofile -i",
         "bind 'set enable-bracketed-paste off'; . " COMPLETION "/completion.bash\n"},
        {"zsh -f -i",
         "unset zle_bracketed_paste; fpath=(" COMPLETION " $fpath); autoload -U compinit; compinit -D -u\n"}};
    for (const auto& [shell, setUp] : shells)
        for (const auto& [typed, wanted] : cases) {
            if (Shell(folder, "command -v " + shell).second != 0) continue;
            folder.Write("typed", setUp + typed + "\nexit\n");
            const std::string shown =
                Shell(folder, "timeout 30 script -qc '" + shell + "' /dev/null <typed").first;
            EXPECT_NE(shown.npos, shown.find(wanted)) << shown;
        }
    EXPECT_FALSE(folder.Has("x"));
}
