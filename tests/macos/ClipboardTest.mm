#include "desktops/macos/Archives.h"
#include "desktops/macos/Bitmap.h"
#include "desktops/macos/Bridge.h"
#include "desktops/macos/ByteCounts.h"
#include "desktops/macos/Pasteboards.h"
#include "desktops/macos/Thumbnails.h"

#include "tests/macos/Program.h"

namespace rb {

namespace {

class SilentLog final : public Log {
public:
    void write(const std::string& line) override { lines.push_back(line); }
    std::vector<std::string> lines;
};

const ArchiveClass itemClass{"RBClipItem",
                             {{"kind", ArchiveKind::Integer},
                              {"text", ArchiveKind::String},
                              {"imageData", ArchiveKind::Data},
                              {"paths", ArchiveKind::Strings},
                              {"date", ArchiveKind::Date}}};

class PasteboardTest : public fake::MacTest {
protected:
    std::vector<std::string> offered(const std::vector<std::string>& types) {
        std::vector<std::string> found;
        EXPECT_FALSE(board_.offeredTypes(types, [&](std::vector<std::string> answer) { found = std::move(answer); }));
        return found;
    }
    MacPasteboard board_;
};

TEST_F(PasteboardTest, readsTheGeneralPasteboard) {
    fake::answer("-[NSPasteboard changeCount]", 42);
    EXPECT_EQ(board_.changeCount(), 42);
    EXPECT_FALSE(board_.onChange([] {})) << "the system doesn't tell";
    fake::onCall("-[NSPasteboard availableTypeFromArray:]", [](fake::Call& call) {
        NSString* asked = ((NSArray*)call.object(0)).firstObject;
        call.answer([asked isEqualToString:@"public.png"] ? asked : nil);
    });
    fake::answer("-[NSPasteboard canReadObjectForClasses:options:]", true);
    EXPECT_EQ(offered({PasteboardType::String, PasteboardType::Png, PasteboardType::FileUrl}),
              (std::vector<std::string>{PasteboardType::Png, PasteboardType::FileUrl}));

    fake::answer("-[NSPasteboard readObjectsForClasses:options:]",
                 @[ [NSURL fileURLWithPath:@"/a/中.txt"], [NSURL fileURLWithPath:@"/b"] ]);
    std::vector<std::string> paths;
    EXPECT_FALSE(board_.readFiles([&](std::vector<std::string> answer) { paths = std::move(answer); }));
    EXPECT_EQ(paths, (std::vector<std::string>{"/a/中.txt", "/b"}));
    const auto asked = fake::lastCall("-[NSPasteboard readObjectsForClasses:options:]");
    NSDictionary* options = asked.object(1);
    EXPECT_TRUE([options[NSPasteboardURLReadingFileURLsOnlyKey] isEqual:@YES]);
    EXPECT_EQ(((NSArray*)asked.object(0)).count, 1u);
}

TEST_F(PasteboardTest, readsTextsAndDataUpToALimit) {
    fake::answer("-[NSPasteboard stringForType:]", @"中文");
    std::optional<std::string> text = "unset";
    (void)board_.readString(6, [&](std::optional<std::string> answer) { text = std::move(answer); });
    EXPECT_EQ(text, "中文");
    (void)board_.readString(5, [&](std::optional<std::string> answer) { text = std::move(answer); });
    EXPECT_FALSE(text);
    fake::answer("-[NSPasteboard dataForType:]", [NSData dataWithBytes:"abc" length:3]);
    SharedBytes data;
    (void)board_.readData(PasteboardType::Tiff, 3, [&](SharedBytes answer) { data = std::move(answer); });
    ASSERT_TRUE(data);
    EXPECT_EQ(*data, (Bytes{'a', 'b', 'c'}));
    EXPECT_TRUE(fake::called("-[NSPasteboard dataForType:] @\"public.tiff\""));
    (void)board_.readData(PasteboardType::Tiff, 2, [&](SharedBytes answer) { data = std::move(answer); });
    EXPECT_FALSE(data);
}

TEST_F(PasteboardTest, clearsBeforeItWrites) {
    fake::answer("-[NSPasteboard setString:forType:]", true);
    EXPECT_TRUE(board_.write(std::string("text")));
    EXPECT_TRUE(fake::calledInOrder({"-[NSPasteboard clearContents]", "-[NSPasteboard setString:forType:]"}));
    fake::answer("-[NSPasteboard setData:forType:]", false);
    EXPECT_FALSE(board_.write(PasteboardData{PasteboardType::Png, std::make_shared<const Bytes>(Bytes{1})}));
    EXPECT_EQ(fake::lastCall("-[NSPasteboard setData:forType:]").string(1), "public.png");
    fake::answer("-[NSPasteboard writeObjects:]", true);
    EXPECT_TRUE(board_.write(PasteboardFiles{{"/a", "/b"}}));
    NSArray<NSURL*>* urls = fake::lastCall("-[NSPasteboard writeObjects:]").object(0);
    ASSERT_EQ(urls.count, 2u);
    EXPECT_TRUE(urls[1].fileURL);
    EXPECT_TRUE([urls[1].path isEqualToString:@"/b"]);
    EXPECT_TRUE(fake::calledTimes(3, "-[NSPasteboard clearContents]"));
}

class ArchiveTest : public fake::MacTest {
protected:
    SilentLog log_;
    MacArchives archives_{log_};
};

TEST_F(ArchiveTest, livesInAPrivateFolder) {
    fake::answer("-[NSFileManager URLsForDirectory:inDomains:]", @[ [NSURL fileURLWithPath:@"/Users/a/Support"] ]);
    EXPECT_EQ(archives_.location("Clipboard.archive"), "/Users/a/Support/Rook Bay/Clipboard.archive");
    const auto made =
        fake::lastCall("-[NSFileManager createDirectoryAtURL:withIntermediateDirectories:attributes:error:]");
    EXPECT_EQ(made.integer(1), 1);
    EXPECT_TRUE([((NSDictionary*)made.object(2))[NSFilePosixPermissions] isEqual:@0700]);
}

TEST_F(ArchiveTest, encodesAnArrayOfTheProductsClass) {
    NSArray* root = nil;
    fake::onCall("-[NSKeyedArchiver encodeObject:forKey:]", [&](fake::Call& call) { root = call.object(0); });
    fake::answer("-[NSKeyedArchiver encodedData]", [NSData dataWithBytes:"x" length:1]);
    fake::answer("-[NSData writeToFile:options:error:]", true);
    const ArchiveObject object{{"kind", std::int64_t{2}}, {"paths", std::vector<std::string>{"/a"}}, {"text", {}}};
    @autoreleasepool {
        EXPECT_TRUE(archives_.write("/x/Clipboard.archive", itemClass, {object}));
        EXPECT_TRUE(fake::called("-[NSKeyedArchiver initRequiringSecureCoding:] YES"));
        EXPECT_EQ(fake::lastCall("-[NSKeyedArchiver setClassName:forClass:]").string(0), "RBClipItem");
        EXPECT_TRUE(fake::called("-[NSData writeToFile:options:error:] @\"/x/Clipboard.archive\""));
        const auto written = fake::lastCall("-[NSData writeToFile:options:error:]");
        EXPECT_EQ(written.integer(1), static_cast<long>(NSDataWritingAtomic));
        const auto protection = fake::lastCall("-[NSFileManager setAttributes:ofItemAtPath:error:]");
        EXPECT_TRUE([((NSDictionary*)protection.object(0))[NSFilePosixPermissions] isEqual:@0600]);
        ASSERT_EQ(root.count, 1u);
        NSCoder* coder = [[NSCoder alloc] init];
        [(id<NSCoding>)root[0] encodeWithCoder:coder];
        EXPECT_TRUE(fake::called("-[NSCoder encodeInteger:forKey:] 2, @\"kind\""));
        EXPECT_TRUE(fake::called("-[NSCoder encodeObject:forKey:] nil, @\"text\"")) << "also what has no value";
        root = nil;
    }
}

TEST_F(ArchiveTest, setsAsideWhatIsNoArchive) {
    fake::answer("+[NSData dataWithContentsOfFile:]", [NSData dataWithBytes:"x" length:1]);
    fake::answer("-[NSKeyedUnarchiver decodeObjectOfClasses:forKey:]", @"no array");
    fake::answer("-[NSFileManager moveItemAtPath:toPath:error:]", true);
    EXPECT_FALSE(archives_.read("/x/Clipboard.archive", itemClass));
    EXPECT_TRUE(fake::called("-[NSKeyedUnarchiver setDecodingFailurePolicy:] 1"));
    EXPECT_TRUE(fake::called("-[NSKeyedUnarchiver setRequiresSecureCoding:] YES"));
    const auto moved = fake::lastCall("-[NSFileManager moveItemAtPath:toPath:error:]");
    EXPECT_EQ(moved.string(1).rfind("/x/Clipboard.archive.broken-", 0), 0u);
    EXPECT_EQ(log_.lines.size(), 1u);
    fake::answer("+[NSData dataWithContentsOfFile:]", id(nil));
    EXPECT_FALSE(archives_.read("/x/Clipboard.archive", itemClass)) << "nothing there";
    EXPECT_TRUE(fake::calledTimes(1, "-[NSFileManager moveItemAtPath:toPath:error:]"));
}

TEST_F(ArchiveTest, thumbnailsDrawThemselvesWhenShown) {
    MacThumbnails thumbnails;
    NSImage* picture = [[NSImage alloc] init];
    fake::answer("-[NSImage initWithData:]", picture);
    fake::answer(picture, "size", CGSizeMake(100, 50));
    const auto decoded = thumbnails.squareThumb(std::make_shared<const Bytes>(Bytes{1}), 26, 5);
    EXPECT_TRUE(fake::called("+[NSImage imageWithSize:flipped:drawingHandler:]"));
    EXPECT_TRUE(fake::calledTimes(0, "-[NSImage drawInRect:fromRect:operation:fraction:]"));
    const auto draw = fake::lastCall("+[NSImage imageWithSize:flipped:drawingHandler:]").block<BOOL (^)(NSRect)>(2);
    EXPECT_TRUE(draw(NSMakeRect(0, 0, 26, 26)));
    const CGRect filled = fake::lastCall("-[NSImage drawInRect:fromRect:operation:fraction:]").rect(0);
    EXPECT_EQ(filled.size.width, 52);
    EXPECT_EQ(filled.size.height, 26);
    EXPECT_EQ(filled.origin.x, -13);
    EXPECT_EQ(filled.origin.y, 0);
}

} // namespace

} // namespace rb
