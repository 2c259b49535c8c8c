#include "kest_libc.h"

#include "kest.h"

#include <cerrno>
#include <cstdlib>

namespace {

class Threshold : public KestTest {
protected:
    Threshold() { set(KEST_LEVEL_ERROR); }
    ~Threshold() override
    {
        unsetenv("KEST_DEBUG");
        set(KEST_LEVEL_ERROR);
    }
    static void set(int level) { __atomic_store_n(&__kest_debug_min, level, __ATOMIC_RELAXED); }
    static int afterInitWith(const char* value)
    {
        setenv("KEST_DEBUG", value, 1);
        kest_debug_init("kest_tests");
        return __atomic_load_n(&__kest_debug_min, __ATOMIC_RELAXED);
    }
};

TEST_F(Threshold, IsErrorUntilToldOtherwise)
{
    unsetenv("KEST_DEBUG");
    kest_debug_init("kest_tests");
    EXPECT_EQ(__kest_debug_min, KEST_LEVEL_ERROR);
}

TEST_F(Threshold, EveryDigitFromNoneToLogIsTaken)
{
    EXPECT_EQ(afterInitWith("0"), KEST_LEVEL_NONE);
    EXPECT_EQ(afterInitWith("1"), KEST_LEVEL_ERROR);
    EXPECT_EQ(afterInitWith("2"), KEST_LEVEL_WARNING);
    EXPECT_EQ(afterInitWith("3"), KEST_LEVEL_INFO);
    EXPECT_EQ(afterInitWith("4"), KEST_LEVEL_DEBUG);
    EXPECT_EQ(afterInitWith("5"), KEST_LEVEL_LOG);
}

TEST_F(Threshold, AnythingElseLeavesItAsItIs)
{
    for (const char* value : {"", "6", "9", "x", "33", "-1", " 3", "3 ", "/", ":"}) {
        set(KEST_LEVEL_INFO);
        EXPECT_EQ(afterInitWith(value), KEST_LEVEL_INFO) << '"' << value << '"';
    }
}

TEST_F(Threshold, NoProgramNameIsFine)
{
    setenv("KEST_DEBUG", "4", 1);
    kest_debug_init(nullptr);
    EXPECT_EQ(__kest_debug_min, KEST_LEVEL_DEBUG);
}

class Category : public KestTest {};

TEST_F(Category, CarriesItsName)
{
    static kest_debug_category* category = kest_debug_category_new("RECOVERY_NET_CONNECTION", 7, "Platform Glue Net");
    EXPECT_NE(category, KEST_CAT_DEFAULT);
    EXPECT_STREQ(kest_debug_category_name(category), "RECOVERY_NET_CONNECTION");
}

TEST_F(Category, CopiesTheNameAndCutsItAfter63Bytes)
{
    std::string name(100, 'n');
    static kest_debug_category* category = kest_debug_category_new(name.c_str(), 0, nullptr);
    name.assign(100, '?');
    EXPECT_EQ(kest_debug_category_name(category), std::string(63, 'n'));
}

TEST_F(Category, NoNameIsTheEmptyName)
{
    static kest_debug_category* category = kest_debug_category_new(nullptr, 0, nullptr);
    EXPECT_STREQ(kest_debug_category_name(category), "");
}

TEST_F(Category, WithoutMemoryIsTheDefaultOne)
{
    libc.outOfMemory = true;
    kest_debug_category* category = kest_debug_category_new("any", 0, "any");
    libc.outOfMemory = false;
    EXPECT_EQ(category, KEST_CAT_DEFAULT);
}

TEST_F(Category, NullMeansTheDefaultOne)
{
    ASSERT_NE(KEST_CAT_DEFAULT, nullptr);
    EXPECT_STREQ(kest_debug_category_name(nullptr), "DEFAULT");
    EXPECT_STREQ(kest_debug_category_name(KEST_CAT_DEFAULT), "DEFAULT");
}

class Log : public KestTest {
protected:
    Log() { libc.now = timespec{.tv_sec = 12, .tv_nsec = 34'999'999}; }

    static std::string text(const std::string& message)
    {
        return stderrOf([&] { kest_debug_log(nullptr, KEST_LEVEL_INFO, "mod", "fn", 1, "%s", message.c_str()); });
    }
    static std::string line(const std::string& text) { return "12.034 INFO    DEFAULT mod fn:1 " + text + "\n"; }
};

TEST_F(Log, ShowsTimeLevelCategoryModulePlaceAndText)
{
    static kest_debug_category* category = kest_debug_category_new("RECOVERY_NET_CONNECTION", 0, "");
    EXPECT_EQ(stderrOf([] {
                  kest_debug_log(category, KEST_LEVEL_WARNING, "movo_net_fl_common", "ifup", 42, "setting ip to %08x\n",
                                 0x0100007fU);
              }),
              "12.034 WARNING RECOVERY_NET_CONNECTION movo_net_fl_common ifup:42 setting ip to 0100007f\n");
}

TEST_F(Log, ShowsEveryLevelAsAWord)
{
    const std::string all = stderrOf([] {
        for (int level = -1; level <= 6; ++level) {
            kest_debug_log(nullptr, level, "m", "f", 1, "text\n");
        }
    });
    EXPECT_EQ(all, "12.034 ?       DEFAULT m f:1 text\n"
                   "12.034 NONE    DEFAULT m f:1 text\n"
                   "12.034 ERROR   DEFAULT m f:1 text\n"
                   "12.034 WARNING DEFAULT m f:1 text\n"
                   "12.034 INFO    DEFAULT m f:1 text\n"
                   "12.034 DEBUG   DEFAULT m f:1 text\n"
                   "12.034 LOG     DEFAULT m f:1 text\n"
                   "12.034 ?       DEFAULT m f:1 text\n");
}

TEST_F(Log, ShowsWhyACallFailedThatItsMessageDoesNotExplain)
{
    const auto logged = [](int error, void (*log)()) {
        return stderrOf([&] {
            errno = error;
            log();
            EXPECT_EQ(errno, error);
        });
    };
    const auto cannotOpen = [] { kest_debug_log(nullptr, KEST_LEVEL_ERROR, "m", "f", 1, "cannot open %s\n", "x"); };
    EXPECT_EQ(logged(EROFS, cannotOpen), "12.034 ERROR   DEFAULT m f:1 cannot open x\n") << "the logger is not started";
    kest_debug_init("app");
    EXPECT_EQ(logged(EROFS, cannotOpen), "12.034 ERROR   DEFAULT m f:1 cannot open x (Read-only file system)\n");
    EXPECT_EQ(logged(0, cannotOpen), "12.034 ERROR   DEFAULT m f:1 cannot open x\n");
    EXPECT_EQ(logged(ENOSPC, [] { kest_debug_log(nullptr, KEST_LEVEL_ERROR, "m", "f", 1, "write failed\n"); }),
              "12.034 ERROR   DEFAULT m f:1 write failed (No space left on device)\n");
    EXPECT_EQ(logged(EROFS, [] { kest_debug_log(nullptr, KEST_LEVEL_INFO, "m", "f", 1, "cannot open x\n"); }),
              "12.034 INFO    DEFAULT m f:1 cannot open x\n");
    EXPECT_EQ(logged(ENOENT, [] { kest_debug_log(nullptr, KEST_LEVEL_ERROR, "m", "f", 1, "enter\n"); }),
              "12.034 ERROR   DEFAULT m f:1 enter\n")
        << "an errno of long ago says nothing";
}

TEST_F(Log, TakesItsTimeFromTheMonotonicClock)
{
    libc.now.reset();
    timespec before{};
    ASSERT_EQ(clock_gettime(CLOCK_MONOTONIC, &before), 0);
    const double shown = std::stod(text("x"));
    const double asked = static_cast<double>(before.tv_sec) + static_cast<double>(before.tv_nsec) / 1e9;
    EXPECT_GE(shown, asked - 0.001); // shown in whole milliseconds
    EXPECT_LT(shown, asked + 60);
}

TEST_F(Log, EndsInExactlyOneLineEnd)
{
    EXPECT_EQ(text("text"), line("text"));
    EXPECT_EQ(text("text\n"), line("text"));
    EXPECT_EQ(text("text\r\n\n"), line("text"));
    EXPECT_EQ(text("text \n"), line("text "));
    EXPECT_EQ(text("\n"), line(""));
}

TEST_F(Log, FoldsEveryControlCharacterToABlank)
{
    EXPECT_EQ(text("\nfirst\nsecond\r\n\tthird\n"), line(" first second   third"));
    EXPECT_EQ(text("red \x1b[31m bell \x07 delete \x7f end"), line("red  [31m bell   delete   end"));
    EXPECT_EQ(text("Caf\xc3\xa9"), line("Caf\xc3\xa9"));
}

TEST_F(Log, IsCutTo1023BytesAndItsLineEnd)
{
    const std::string head = line("");
    const size_t fits = 1023 - (head.size() - 1);
    const std::string justFits(fits, 'a');
    EXPECT_EQ(text(justFits + "\n"), line(justFits));

    for (const size_t more : {size_t{1}, size_t{2}, size_t{5000}}) {
        const std::string cut = text(std::string(fits + more, 'a') + "\n");
        EXPECT_EQ(cut, line(justFits)) << more << " too many";
    }
}

TEST_F(Log, IsCutWhenTheNamesAloneAreTooLong)
{
    const std::string name(3000, 'n');
    const std::string shown =
        stderrOf([&] { kest_debug_log(nullptr, KEST_LEVEL_INFO, name.c_str(), name.c_str(), 1, "text\n"); });
    EXPECT_EQ(shown, std::string("12.034 INFO    DEFAULT ").append(1000, 'n') + "\n");
}

TEST_F(Log, KeepsErrnoAndShowsTheCallers)
{
    EXPECT_EQ(stderrOf([] {
                  errno = ENOENT;
                  kest_debug_log(nullptr, KEST_LEVEL_INFO, "mod", "fn", 1, "%m\n");
              }),
              line("No such file or directory"));

    libc.writeErrors = {EAGAIN};
    errno = ENOENT;
    kest_debug_log(nullptr, KEST_LEVEL_INFO, "m", "f", 1, "lost\n");
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(Log, IsOneWriteAndTriesAgainOnlyAfterASignal)
{
    EXPECT_EQ(text("one\nmessage\n"), line("one message"));
    EXPECT_EQ(libc.linesWritten, 1);

    libc.writeErrors = {EINTR, EINTR};
    EXPECT_EQ(text("after signals\n"), line("after signals"));
    EXPECT_EQ(libc.linesWritten, 2);

    libc.writeErrors = {EAGAIN};
    EXPECT_EQ(text("lost\n"), "");
    EXPECT_EQ(libc.linesWritten, 2);
}

TEST_F(Log, MessageThatCannotBeFormattedStillGivesItsLine)
{
    const wchar_t notACharacter[] = {static_cast<wchar_t>(0x7FFFFFFF), L'\0'};
    EXPECT_EQ(stderrOf([&] { kest_debug_log(nullptr, KEST_LEVEL_INFO, "mod", "fn", 1, "%ls\n", notACharacter); }),
              line(""));
}

} // namespace
