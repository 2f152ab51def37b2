#include "desktops/linux/KeyedArchive.h"

#include "clipboard/ClipItem.h"
#include "desktops/linux/Archives.h"
#include "desktops/linux/PlistData.h"
#include "desktops/linux/PlistFormat.h"
#include "desktops/linux/PlistGuard.h"
#include "tests/linux/LinuxFixture.h"
#include "tests/linux/MemoryStore.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <plist/plist.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace rb {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

SharedBytes bytes(const std::string& text) {
    return std::make_shared<const Bytes>(text.begin(), text.end());
}

std::vector<ArchiveObject> sample() {
    return {RBClipItem::ofText("文字 😀 \u202Eabc\n\ttabs", 1'790'000'000.25).encode(),
            RBClipItem::ofImage(bytes(std::string("\x89PNG\0\xff", 6)), "public.png", 5).encode(),
            RBClipItem::ofFiles({"/tmp/a b", "/tmp/中"}, -3).encode()};
}

std::string encoded(const std::vector<ArchiveObject>& objects) {
    const EncodedArchive archive = encodeArchive(RBClipItem::archiveClass(), objects);
    std::string file = archive.texts.at(0);
    for (std::size_t index = 0; index < archive.data.size(); ++index) {
        const SharedBytes data = archive.data[index]->bytes();
        file.append(data->begin(), data->end());
        file += archive.texts.at(index + 1);
    }
    return file;
}

DecodedArchive decoded(const std::string& file) {
    return decodeArchive(RBClipItem::archiveClass(), std::make_shared<const MemoryStore>(file));
}

std::vector<RBClipItem> itemsOf(const std::string& file) {
    std::vector<RBClipItem> items;
    const DecodedArchive archive = decoded(file);
    EXPECT_TRUE(archive.objects) << archive.fault;
    for (const ArchiveObject& object : archive.objects.value_or(std::vector<ArchiveObject>())) {
        items.push_back(RBClipItem::decode(object, 0));
    }
    return items;
}

// The text form has no references; by custom they are dictionaries with a special key.
plist_t withReferences(plist_t node) {
    if (plist_get_node_type(node) == PLIST_ARRAY) {
        plist_t array = plist_new_array();
        for (std::uint32_t index = 0; index < plist_array_get_size(node); ++index) {
            plist_array_append_item(array, withReferences(plist_array_get_item(node, index)));
        }
        return array;
    }
    if (plist_get_node_type(node) != PLIST_DICT) {
        return plist_copy(node);
    }
    if (plist_t number = plist_dict_get_item(node, "CF$UID")) {
        std::uint64_t value = 0;
        plist_get_uint_val(number, &value);
        return plist_new_uid(value);
    }
    plist_t dictionary = plist_new_dict();
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(node, &position);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, position, &key, &value);
        if (value == nullptr) {
            break;
        }
        plist_dict_set_item(dictionary, key, withReferences(value));
        std::free(key);
    }
    std::free(position);
    return dictionary;
}

// A property list in the old text form, which is easy to write, as a binary one.
std::string binaryOf(const std::string& xmlBody) {
    const std::string xml = "<?xml version=\"1.0\"?><plist version=\"1.0\">" + xmlBody + "</plist>";
    plist_t node = nullptr;
    plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &node);
    char* start = nullptr;
    std::uint32_t size = 0;
    plist_t whole = withReferences(node);
    plist_to_bin(whole, &start, &size);
    plist_free(whole);
    plist_free(node);
    std::string file(start, size);
    plist_to_bin_free(start);
    return file;
}

std::string ref(int number) {
    return "<dict><key>CF$UID</key><integer>" + std::to_string(number) + "</integer></dict>";
}

// An archive of one record with these keys; objects from 4 on are given.
std::string archiveWith(const std::string& record, const std::string& objects) {
    return binaryOf(
        "<dict><key>$archiver</key><string>NSKeyedArchiver</string><key>$version</key>"
        "<integer>100000</integer><key>$top</key><dict><key>root</key>" +
        ref(1) + "</dict><key>$objects</key><array><string>$null</string><dict><key>NS.objects</key><array>" + ref(2) +
        "</array><key>$class</key>" + ref(3) + "</dict><dict>" + record + "<key>$class</key>" + ref(4) +
        "</dict><dict><key>$classname</key><string>NSMutableArray</string><key>$classes</key><array>"
        "<string>NSMutableArray</string><string>NSArray</string><string>NSObject</string></array></dict>"
        "<dict><key>$classname</key><string>RBClipItem</string><key>$classes</key><array>"
        "<string>RBClipItem</string><string>NSObject</string></array></dict>" +
        objects + "</array></dict>");
}

TEST(KeyedArchiveTest, WhatIsWrittenIsReadBack) {
    const auto items = itemsOf(encoded(sample()));
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0].text(), "文字 😀 \u202Eabc\n\ttabs");
    EXPECT_EQ(items[0].date, 1'790'000'000.25);
    EXPECT_EQ(*items[1].imageData()->bytes(), *bytes(std::string("\x89PNG\0\xff", 6)));
    EXPECT_EQ(items[1].imageType(), "public.png");
    EXPECT_THAT(*items[2].paths(), ElementsAre("/tmp/a b", "/tmp/中"));
    EXPECT_EQ(items[2].date, -3);
    EXPECT_TRUE(decoded(encoded({})).objects->empty());
}

TEST(KeyedArchiveTest, WrappedAndMutableObjectsAreReadToo) {
    const std::string file =
        archiveWith("<key>kind</key><integer>1</integer><key>imageData</key>" + ref(5) + "<key>imageType</key>" +
                        ref(6) + "<key>text</key>" + ref(0),
                    "<dict><key>NS.data</key><data>AQID</data><key>$class</key>" + ref(7) +
                        "</dict><dict><key>NS.string</key><string>public.tiff</string><key>$class</key>" + ref(8) +
                        "</dict><dict><key>$classname</key><string>NSMutableData</string><key>$classes</key><array>"
                        "<string>NSMutableData</string><string>NSData</string></array></dict>"
                        "<dict><key>$classname</key><string>NSMutableString</string><key>$classes</key><array>"
                        "<string>NSMutableString</string><string>NSString</string></array></dict>");
    const auto items = itemsOf(file);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(*items[0].imageData()->bytes(), (Bytes{1, 2, 3}));
    EXPECT_EQ(items[0].imageType(), "public.tiff");
    EXPECT_FALSE(items[0].text());
}

TEST(KeyedArchiveTest, ADamagedRecordCostsOnlyItself) {
    const std::string good = "<key>kind</key><integer>0</integer><key>text</key>" + ref(5);
    EXPECT_EQ(decoded(archiveWith(good, "<string>x</string>")).objects->size(), 1U);
    const std::vector<std::string> wrong{
        "<key>kind</key><string>0</string>",
        "<key>kind</key>" + ref(5),
        "<key>text</key><string>in place</string>",
        "<key>text</key>" + ref(99),
        "<key>text</key>" + ref(3),
        "<key>imageData</key>" + ref(5),
        "<key>imageType</key>" + ref(2),
        "<key>paths</key>" + ref(5),
        "<key>paths</key>" + ref(2),
        "<key>date</key>" + ref(5),
        "<key>date</key><date>2026-01-01T00:00:00Z</date>",
    };
    for (const std::string& record : wrong) {
        const DecodedArchive archive = decoded(archiveWith(record, "<string>x</string>"));
        ASSERT_TRUE(archive.objects) << record;
        EXPECT_THAT(*archive.objects, IsEmpty()) << record;
        EXPECT_EQ(archive.damaged, 1U) << record;
    }
}

TEST(KeyedArchiveTest, TextsThatCannotBeStoredCostOnlyThemselves) {
    auto objects = sample();
    objects.insert(objects.begin(), RBClipItem::ofText(std::string("a\0b", 3), 0).encode());
    objects.push_back(RBClipItem::ofFiles({"/good", "/bad\xff"}, 0).encode());
    EXPECT_EQ(itemsOf(encoded(objects)).size(), 3U);
}

TEST(KeyedArchiveTest, ForeignFilesAreNoArchives) {
    for (const std::string& file :
         {std::string(), std::string("bplist00"), std::string(1000, '\0'), std::string("<?xml version=\"1.0\"?>"),
          binaryOf("<string>hello</string>"), binaryOf("<array/>"),
          binaryOf("<dict><key>a</key><integer>1</integer></dict>"),
          binaryOf("<dict><key>$archiver</key><string>NSKeyedArchiver</string><key>$objects</key><array/>"
                   "<key>$top</key><dict><key>root</key>" +
                   ref(1) + "</dict></dict>")}) {
        const DecodedArchive archive = decoded(file);
        EXPECT_FALSE(archive.objects);
        EXPECT_FALSE(archive.fault.empty());
    }
}

// Cut anywhere and with any byte changed, reading ends, and whatever is read is whole.
TEST(KeyedArchiveTest, DamagedBytesNeverDoHarm) {
    const std::string whole = encoded(sample());
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(decoded(whole.substr(0, length)).objects) << length;
    }
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (const int change : {0x01, 0x10, 0x80, 0xFF}) {
            std::string damaged = whole;
            damaged[place] = static_cast<char>(damaged[place] ^ change);
            const DecodedArchive archive = decoded(damaged);
            EXPECT_EQ(archive.objects.has_value(), archive.fault.empty());
        }
    }
}

// An array of objects, each of which holds the next one a number of times.
std::string nested(unsigned depth, unsigned times, bool circle) {
    std::string file = "bplist00";
    std::vector<std::size_t> offsets;
    const auto big = [](std::size_t value, unsigned size) {
        std::string text;
        for (unsigned index = size; index-- > 0;) {
            text += static_cast<char>(value >> (8 * index));
        }
        return text;
    };
    for (unsigned level = 0; level < depth; ++level) {
        offsets.push_back(file.size());
        const bool last = level + 1 == depth;
        const unsigned count = last && !circle ? 0 : times;
        file += static_cast<char>(0xA0 | count);
        for (unsigned time = 0; time < count; ++time) {
            file += big(last ? 0 : level + 1, 4);
        }
    }
    const std::size_t table = file.size();
    for (const std::size_t offset : offsets) {
        file += big(offset, 4);
    }
    return file + std::string(6, '\0') + "\x04\x04" + big(offsets.size(), 8) + big(0, 8) + big(table, 8);
}

TEST(PlistGuardTest, RefusesWhatWouldExhaustItsReader) {
    EXPECT_EQ(plistFault(nested(10, 1, false)), "");
    EXPECT_THAT(plistFault(nested(200'000, 1, false)), HasSubstr("deep"));
    EXPECT_THAT(plistFault(nested(3, 1, true)), HasSubstr("contains itself"));
    EXPECT_THAT(plistFault(nested(40, 3, false)), HasSubstr("too large")) << "3^40 objects when written out";
    EXPECT_EQ(plistFault(encoded(sample())), "");
}

TEST(KeyedArchiveTest, RoomForDataOfAnySizeLeavesTheListReadable) {
    std::vector<ArchiveObject> objects;
    const std::vector<std::size_t> sizes{0, 1, 8, 14, 15, 255, 256, 65'535, 65'536, 3};
    objects.reserve(sizes.size());
    for (const std::size_t size : sizes) {
        objects.push_back(RBClipItem::ofImage(bytes(std::string(size, 'd')), "public.png", 1).encode());
    }
    const std::string file = encoded(objects);
    EXPECT_EQ(plistFault(file), "");
    plist_t whole = nullptr; // as any other program reads it
    plist_from_bin(file.data(), static_cast<std::uint32_t>(file.size()), &whole);
    ASSERT_NE(whole, nullptr);
    plist_free(whole);
    const auto items = itemsOf(file);
    ASSERT_EQ(items.size(), sizes.size());
    for (std::size_t index = 0; index < sizes.size(); ++index) {
        EXPECT_EQ(items[index].imageData()->size(), sizes[index]);
        EXPECT_EQ(*items[index].imageData()->bytes(), Bytes(sizes[index], 'd'));
    }
}

// Small on the disk, but each object all of it again.
TEST(PlistDataTest, RefusesObjectsThatOverlap) {
    constexpr std::size_t length = 5000;
    std::string file = "bplist00\x5F\x11";
    PlistFormat::append(file, length, 2);
    file += std::string(length, 'x');
    const std::size_t table = file.size();
    constexpr std::size_t objects = 100'000;
    for (std::size_t object = 0; object < objects; ++object) {
        PlistFormat::append(file, 8, 1);
    }
    file += std::string(6, '\0') + "\x01\x04";
    for (const std::size_t each : {objects, std::size_t{0}, table}) {
        PlistFormat::append(file, each, 8);
    }
    EXPECT_THAT(withMarks(MemoryStore(file)).fault, HasSubstr("overlap"));
}

class LinuxArchivesTest : public testing::Test {
protected:
    LinuxArchives& start() {
        archives_ = std::make_unique<LinuxArchives>(folder_, log_);
        return *archives_;
    }
    std::optional<std::vector<ArchiveObject>> read() { return start().read(path(), RBClipItem::archiveClass()); }
    bool write(const std::vector<ArchiveObject>& objects) {
        return archives_->write(path(), RBClipItem::archiveClass(), objects);
    }
    std::string path() {
        return archives_ ? archives_->location("Clipboard.archive") : start().location("Clipboard.archive");
    }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder_)) {
            found.push_back(entry.path().filename());
        }
        std::sort(found.begin(), found.end());
        return found;
    }
    static mode_t modeOf(const std::string& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 07777U;
    }

    TemporaryFolder home_;
    std::string folder_ = home_ / "data/rook-bay";
    RecordingLog log_;
    std::unique_ptr<LinuxArchives> archives_;
};

TEST_F(LinuxArchivesTest, WritesAPrivateFileInAPrivateFolder) {
    start();
    EXPECT_FALSE(read());
    const mode_t mask = umask(0);
    EXPECT_TRUE(write(sample()));
    umask(mask);
    EXPECT_EQ(modeOf(folder_), 0700U);
    EXPECT_EQ(modeOf(path()), 0600U);
    fs::permissions(path(), fs::perms::all);
    umask(0777);
    EXPECT_TRUE(write(sample()));
    umask(mask);
    EXPECT_EQ(modeOf(path()), 0600U) << "whatever it was before";
    EXPECT_EQ(read()->size(), 3U);
    EXPECT_THAT(names(), ElementsAre("Clipboard.archive"));
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(LinuxArchivesTest, ADamagedFileIsSetAsideBeforeANewOneIsWritten) {
    const std::string file = path();
    writeText(file, "damaged");
    EXPECT_FALSE(read());
    EXPECT_TRUE(write(sample()));
    writeText(file, "damaged again");
    EXPECT_FALSE(read());
    const auto found = names();
    ASSERT_EQ(found.size(), 2U) << "also within the same second";
    EXPECT_THAT(found[0], MatchesRegex("Clipboard\\.archive\\.broken-[0-9]+T[0-9]+Z"));
    EXPECT_EQ(readText(folder_ + "/" + found[0]), "damaged");
    EXPECT_EQ(readText(folder_ + "/" + found[1]), "damaged again");
    EXPECT_EQ(log_.lines().size(), 2U);
}

TEST_F(LinuxArchivesTest, WhatIsNoFileOfOurOwnIsLeftAlone) {
    const std::string file = path();
    const std::string other = home_ / "other";
    writeText(other, encoded(sample()));
    fs::create_symlink(other, file);
    EXPECT_FALSE(read()) << "not through a link";
    EXPECT_FALSE(write({}));
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_EQ(readText(other), encoded(sample()));
    fs::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_FALSE(read()) << "and without waiting";
    EXPECT_FALSE(write({}));
    EXPECT_TRUE(fs::is_fifo(file));
    fs::remove(file);
    EXPECT_FALSE(write({})) << "not within the same run";
    start();
    EXPECT_TRUE(write({}));
    fs::remove(file);
    fs::create_symlink(other, file); // appeared while we ran
    EXPECT_FALSE(write({}));
    EXPECT_TRUE(fs::is_symlink(file));
    // A link laid where the new file is made.
    fs::remove(file);
    fs::create_symlink(other, file + ".new");
    EXPECT_TRUE(write({}));
    EXPECT_EQ(readText(other), encoded(sample()));
}

TEST_F(LinuxArchivesTest, WithoutRoomTheOldFileStays) {
    ASSERT_TRUE((start(), write(sample())));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual{};
    getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit small{100, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_FALSE(write({}) && write(sample()));
    EXPECT_FALSE(write(sample()));
    setrlimit(RLIMIT_FSIZE, &usual);
    EXPECT_THAT(names(), ElementsAre("Clipboard.archive"));
    EXPECT_EQ(log_.lines().size(), 1U) << "told once";
    EXPECT_EQ(read()->size(), 3U);
    // A folder that can't be made.
    writeText(home_ / "file", "");
    folder_ = home_ / "file/rook-bay";
    EXPECT_EQ(start().location("Clipboard.archive"), "");
    EXPECT_FALSE(read());
}

TEST_F(LinuxArchivesTest, DataRestInTheFileFromWhichTheyAreWrittenAgain) {
    const Bytes picture(1'500'000, 7);
    const RBClipItem item = RBClipItem::ofImage(std::make_shared<const Bytes>(picture), "public.png", 1);
    start();
    ASSERT_TRUE(write({item.encode()}));
    ASSERT_TRUE(item.imageData()->place()) << "not in memory any more";
    const std::weak_ptr<const ByteStore> first = item.imageData()->place()->store;
    EXPECT_EQ(*item.imageData()->bytes(), picture);
    fs::remove(path());
    EXPECT_EQ(*item.imageData()->bytes(), picture) << "whatever happens to the name";
    ASSERT_TRUE(write({sample()[0], item.encode()}));
    EXPECT_TRUE(first.expired()) << "the old file's room on the disk is free";
    EXPECT_EQ(*item.imageData()->bytes(), picture);

    const auto objects = read();
    ASSERT_EQ(objects->size(), 2U);
    const RBClipItem again = RBClipItem::decode(objects->at(1), 0);
    EXPECT_TRUE(again.sameContentAs(item));
    ASSERT_TRUE(write(*objects));
    EXPECT_EQ(*RBClipItem::decode(read()->at(1), 0).imageData()->bytes(), picture);
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(LinuxArchivesTest, AFileThatSomebodyWroteIntoCostsOnlyWhatRestsThere) {
    const RBClipItem resting = RBClipItem::ofImage(bytes(std::string(100'000, 'a')), "public.png", 1);
    start();
    ASSERT_TRUE(write({resting.encode()}));
    const RBClipItem fresh = RBClipItem::ofImage(bytes(std::string(100'000, 'b')), "public.png", 2);
    const auto size = fs::file_size(path());
    fs::resize_file(path(), 1000);
    fs::resize_file(path(), size);
    EXPECT_FALSE(resting.imageData()->bytes());
    EXPECT_FALSE(resting.sameContentAs(RBClipItem::ofImage(bytes(std::string(100'000, 'a')), "public.png", 1)));
    ASSERT_TRUE(write({fresh.encode(), resting.encode(), sample()[0]}));
    EXPECT_EQ(read()->size(), 2U);
    ASSERT_EQ(log_.lines().size(), 1U);
    EXPECT_THAT(log_.lines()[0], HasSubstr("1 records"));
}

// Killed at any moment, the old or the new archive is there, whole.
TEST_F(LinuxArchivesTest, AnEndAtAnyInstantLeavesAWholeArchive) {
    start();
    ASSERT_TRUE(write(sample()));
    std::vector<ArchiveObject> large;
    for (int i = 0; i < 8; ++i) {
        large.push_back(
            RBClipItem::ofImage(bytes(std::string(300'000, static_cast<char>('a' + i))), "public.png", i).encode());
    }
    int rounds = 300;
    bool independent = false;
    if (const char* wanted = std::getenv("ROOKBAY_KILL_ROUNDS")) { // NOLINT(concurrency-mt-unsafe): one thread
        rounds = std::atoi(wanted);
        independent = true;
    }
    int seenLarge = 0;
    for (int round = 0; round < rounds; ++round) {
        const pid_t child = fork();
        if (child == 0) {
            for (;;) {
                write(large);
                write(sample());
            }
        }
        ASSERT_GT(child, 0);
        usleep(static_cast<useconds_t>(500 + (round * 7919) % 12'000));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const auto objects = read();
        ASSERT_TRUE(objects) << round;
        ASSERT_TRUE(objects->size() == 3 || objects->size() == 8) << round;
        seenLarge += objects->size() == 8 ? 1 : 0;
        ASSERT_LE(names().size(), 2U) << "nothing piles up";
        if (independent) {
            const std::string reading = "python3 " READ_ARCHIVE " " + path() + " >/dev/null";
            ASSERT_EQ(std::system(reading.c_str()), 0) << round; // NOLINT(concurrency-mt-unsafe, cert-env33-c)
        }
    }
    EXPECT_GT(seenLarge, 0);
    EXPECT_LT(seenLarge, rounds);
}

} // namespace

} // namespace rb
