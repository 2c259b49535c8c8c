#include "bench.h"

#include "names.h"
#include "sim/flash.h"

#include <gtest/gtest.h>

using namespace wifi;
using namespace movonet;
using sim::Folder;

// The remembered networks when the power goes at any moment of a save; docs/files.md tells the results.

namespace {
constexpr const char* kFolder = "/data/tv/save";
constexpr const char* kMain = "saved_esss";
constexpr const char* kBackup = "saved_esss_back";

/** The television is switched on again over what the power cut left. */
Lines loadedFrom(sim::Set& set, const Folder& folder)
{
    for (const char* name : {kMain, kBackup}) {
        set.remove(std::string(kFolder) + "/" + name);
    }
    for (const auto& [name, contents] : folder) {
        set.write(std::string(kFolder) + "/" + name, contents);
    }
    freeSavedEsss();
    (void)LoadEsss();
    return rememberedNames();
}

/** The files of so many networks, saved in peace. */
Folder filesOf(sim::Set& set, int count)
{
    (void)loadedFrom(set, {});
    for (int number = count; number > 0; --number) {
        MovNetWifiEssItem_t ess = networkNamed("old" + std::to_string(number));
        EXPECT_EQ(int_Movo_Net_SaveEss(&ess), 0);
    }
    Folder files;
    for (const char* name : {kMain, kBackup}) {
        if (const std::string path = std::string(kFolder) + "/" + name; set.exists(path)) {
            files[name] = set.read(path);
        }
    }
    return files;
}

/** Everything that a power cut may leave while a network is added to those files, by the number of calls made. */
std::vector<std::set<Folder>> cutsOfASave(sim::Set& set, const Folder& before)
{
    (void)loadedFrom(set, before);
    const sim::Flash flash(set, kFolder);
    MovNetWifiEssItem_t ess = networkNamed("new");
    EXPECT_EQ(int_Movo_Net_SaveEss(&ess), 0);
    std::vector<std::set<Folder>> cuts;
    for (std::size_t calls = 0; calls <= flash.calls().size(); ++calls) {
        cuts.push_back(flash.leftAfter(calls));
    }
    return cuts;
}

Lines firstOf(const Lines& names, std::size_t count)
{
    return {names.begin(), names.begin() + static_cast<std::ptrdiff_t>(count)};
}

class PowerCutAtASave : public testing::TestWithParam<int> {};

TEST_P(PowerCutAtASave, LeavesTheOldListTheNewOneOrItsBeginning)
{
    sim::Set set;
    const Folder before = filesOf(set, GetParam());
    const Lines old = loadedFrom(set, before);
    Lines now = old;
    now.insert(now.begin(), "new");
    std::set<Lines> allowed{old};
    for (std::size_t count = 1; count <= now.size(); ++count) {
        allowed.insert(firstOf(now, count));
    }
    std::set<Lines> seen;
    const auto cuts = cutsOfASave(set, before);
    for (std::size_t calls = 0; calls < cuts.size(); ++calls) {
        for (const Folder& left : cuts[calls]) {
            const Lines loaded = loadedFrom(set, left);
            EXPECT_TRUE(allowed.contains(loaded)) << "after call " << calls;
            seen.insert(loaded);
        }
    }
    EXPECT_EQ(seen, allowed) << "each of them at some moment";
    EXPECT_TRUE(cuts.front() == std::set{before});
}
INSTANTIATE_TEST_SUITE_P(Networks, PowerCutAtASave, testing::Values(1, 2, 5, 49));

TEST(PowerCutAtASave, OfTheFirstNetworkMayLoseIt)
{
    sim::Set set;
    for (const auto& cut : cutsOfASave(set, {})) {
        for (const Folder& left : cut) {
            const Lines loaded = loadedFrom(set, left);
            EXPECT_TRUE(loaded.empty() || loaded == Lines{"new"});
        }
    }
}

TEST(PowerCutAtASave, KeepsTheNewListOnceTheFileIsSynchronised)
{
    sim::Set set;
    const Folder before = filesOf(set, 2);
    const auto cuts = cutsOfASave(set, before);
    const sim::Flash flash(set, kFolder);
    bool emptyBackup = false;
    // open, three records, fsync; from then on the copy to the backup is all that is missing
    for (std::size_t calls = 5; calls < cuts.size(); ++calls) {
        for (const Folder& left : cuts[calls]) {
            emptyBackup = emptyBackup || left.at(kBackup).empty();
            EXPECT_EQ(loadedFrom(set, left), (Lines{"new", "old1", "old2"})) << "after call " << calls;
        }
    }
    EXPECT_TRUE(emptyBackup) << "the copy is not synchronised";
}

TEST(PowerCutAtASave, ASaveAfterItIsWhole)
{
    sim::Set set;
    const Folder before = filesOf(set, 2);
    for (const auto& cut : cutsOfASave(set, before)) {
        for (const Folder& left : cut) {
            Lines expected = loadedFrom(set, left);
            MovNetWifiEssItem_t ess = networkNamed("next");
            EXPECT_EQ(int_Movo_Net_SaveEss(&ess), 0);
            expected.insert(expected.begin(), "next");
            EXPECT_EQ(set.read(std::string(kFolder) + "/" + kMain).size(), expected.size() * kSavedRecord);
            EXPECT_EQ(LoadEsss(), 0);
            EXPECT_EQ(rememberedNames(), expected);
        }
    }
}
} // namespace
