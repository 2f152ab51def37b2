#include "tests/macos/Program.h"

#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>

#include <algorithm>

namespace rb {

namespace {

constexpr const char* finderQuestion = "tell application \"Finder\"\n"
                                       "  if (count of Finder windows) is 0 then return POSIX path of (path to desktop folder)\n"
                                       "  return POSIX path of (target of front Finder window as alias)\n"
                                       "end tell";

class NewTextTest : public ProgramTest {
protected:
    // What Finder says from now on; nil for an error with this number.
    void finderSays(NSString* path, NSInteger error = 0) {
        fake::onCall("-[NSAppleScript executeAndReturnError:]", [=](fake::Call& call) {
            if (path != nil) {
                NSAppleEventDescriptor* result = [[NSAppleEventDescriptor alloc] init];
                fake::answer(result, "stringValue", path);
                call.answer(result);
                return;
            }
            if (error != 0) {
                *(NSDictionary * __autoreleasing*)call.pointer<void*>(0) =
                    @{NSAppleScriptErrorNumber : @(error), NSAppleScriptErrorMessage : @"no"};
            }
            call.answer(id(nil));
        });
    }
    void choose() { fake::press(menuItem("新建 TXT…")); }
    static NSSavePanel* panel() { return fake::lastCall("-[NSSavePanel beginWithCompletionHandler:]").receiver(); }
    // The user confirms or cancels.
    static void finish(NSModalResponse response, NSString* path = nil) {
        const auto begun = fake::lastCall("-[NSSavePanel beginWithCompletionHandler:]");
        if (path != nil) {
            fake::answer(begun.receiver(), "URL", [NSURL fileURLWithPath:path]);
        }
        begun.block<void (^)(NSModalResponse)>(0)(response);
    }
    static std::size_t begun() { return fake::calls("-[NSSavePanel beginWithCompletionHandler:]").size(); }
};

TEST_F(NewTextTest, asksFinderAndShowsThePanel) {
    finderSays(@"/Users/rb/文稿");
    launch([this] {
        choose();
        EXPECT_EQ(fake::lastCall("-[NSAppleScript initWithSource:]").string(0), finderQuestion);
        EXPECT_TRUE(fake::calledInOrder(
            {"-[NSApplication activateIgnoringOtherApps:] YES", "-[NSSavePanel beginWithCompletionHandler:]"}));
        EXPECT_EQ(fake::lastCall("-[NSSavePanel setTitle:]").string(0), "新建 TXT");
        EXPECT_EQ(fake::lastCall("-[NSSavePanel setPrompt:]").string(0), "创建");
        EXPECT_EQ(fake::lastCall("-[NSSavePanel setNameFieldStringValue:]").string(0), "新建文本.txt");
        EXPECT_TRUE(fake::called("-[NSSavePanel setAllowsOtherFileTypes:] NO"));
        EXPECT_TRUE(fake::called("-[NSSavePanel setCanCreateDirectories:] YES"));
        EXPECT_TRUE(fake::called("-[NSSavePanel setExtensionHidden:] NO"));
        EXPECT_EQ(fake::lastCall("+[UTType typeWithFilenameExtension:]").string(0), "txt");
        NSURL* folder = fake::lastCall("-[NSSavePanel setDirectoryURL:]").object(0);
        EXPECT_STREQ(folder.path.UTF8String, "/Users/rb/文稿");
        choose();
        EXPECT_EQ(begun(), 1u) << "the open one comes forward";
        EXPECT_TRUE(fake::called("-[NSSavePanel makeKeyAndOrderFront:]"));
        finish(NSModalResponseCancel);
        EXPECT_TRUE(fake::calls("-[NSData writeToURL:options:error:]").empty());
        choose();
        EXPECT_EQ(begun(), 2u);
    });
}

TEST_F(NewTextTest, refusesATakenNameInThePanel) {
    finderSays(@"/f");
    launch([this] {
        choose();
        id<NSOpenSavePanelDelegate> delegate = fake::lastCall("-[NSSavePanel setDelegate:]").object(0);
        NSURL* url = [NSURL fileURLWithPath:@"/f/a.txt"];
        NSError* error = nil;
        EXPECT_TRUE([delegate panel:panel() validateURL:url error:&error]);
        fake::answer("-[NSFileManager destinationOfSymbolicLinkAtPath:error:]", @"/gone");
        EXPECT_FALSE([delegate panel:panel() validateURL:url error:&error]);
        EXPECT_TRUE([error.domain isEqualToString:NSCocoaErrorDomain]);
        EXPECT_EQ(error.code, 516);
        EXPECT_STREQ(error.localizedDescription.UTF8String, "已有同名文件，请换一个名称。");
        EXPECT_FALSE([delegate panel:panel() validateURL:url error:nil]);
    });
}

TEST_F(NewTextTest, writesWithoutReplacingAndOpensTextEdit) {
    finderSays(@"/f");
    fake::answer("-[NSData writeToURL:options:error:]", true);
    fake::answer("-[NSWorkspace URLForApplicationWithBundleIdentifier:]", [NSURL fileURLWithPath:@"/TextEdit.app"]);
    launch([this] {
        choose();
        finish(NSModalResponseOK, @"/f/新.txt");
        const auto written = fake::lastCall("-[NSData writeToURL:options:error:]");
        EXPECT_EQ(written.integer(1), NSDataWritingWithoutOverwriting);
        EXPECT_EQ(static_cast<NSData*>(written.receiver()).length, 0u);
        EXPECT_EQ(fake::lastCall("-[NSWorkspace URLForApplicationWithBundleIdentifier:]").string(0),
                  "com.apple.TextEdit");
        const auto opened = fake::lastCall(
            "-[NSWorkspace openURLs:withApplicationAtURL:configuration:completionHandler:]");
        EXPECT_STREQ([[opened.object(0) firstObject] path].UTF8String, "/f/新.txt");
        const auto told = opened.block<void (^)(NSRunningApplication*, NSError*)>(3);
        told(nil, nil);
        fake::runMainQueue();
        EXPECT_TRUE(fake::calls("-[NSWorkspace activateFileViewerSelectingURLs:]").empty());
        told(nil, [NSError errorWithDomain:NSCocoaErrorDomain code:1 userInfo:nil]);
        fake::runMainQueue();
        EXPECT_EQ(fake::calls("-[NSWorkspace activateFileViewerSelectingURLs:]").size(), 1u);
    });
}

TEST_F(NewTextTest, showsTheFileWhereThereIsNoTextEdit) {
    finderSays(@"/f");
    fake::answer("-[NSData writeToURL:options:error:]", true);
    fake::answer("-[NSWorkspace URLForApplicationWithBundleIdentifier:]", id(nil));
    launch([this] {
        choose();
        finish(NSModalResponseOK, @"/f/a.txt");
        fake::runMainQueue();
        EXPECT_EQ(fake::calls("-[NSWorkspace activateFileViewerSelectingURLs:]").size(), 1u);
    });
}

TEST_F(NewTextTest, aMissingPermissionLeadsToTheSettings) {
    finderSays(nil, -1743);
    fake::answer("-[NSAlert runModal]", NSAlertFirstButtonReturn);
    launch([this] {
        choose();
        EXPECT_EQ(begun(), 0u);
        fake::advance(0.1);
        EXPECT_TRUE(fake::called("-[NSAlert setMessageText:] @\"需要允许 Rook Bay 控制 Finder\""));
        NSURL* settings = fake::lastCall("-[NSWorkspace openURL:]").object(0);
        EXPECT_STREQ(settings.absoluteString.UTF8String,
                     "x-apple.systempreferences:com.apple.preference.security?Privacy_Automation");
    });
}

TEST_F(NewTextTest, otherErrorsAreSilentAndAWriteErrorIsTold) {
    finderSays(nil, -600);
    fake::answer("-[NSFileManager URLsForDirectory:inDomains:]", @[ [NSURL fileURLWithPath:@"/Users/rb/Desktop"] ]);
    fake::onCall("-[NSData writeToURL:options:error:]", [](fake::Call& call) {
        *(NSError * __autoreleasing*)call.pointer<void*>(2) =
            [NSError errorWithDomain:NSCocoaErrorDomain code:640 userInfo:@{NSLocalizedDescriptionKey : @"磁盘已满。"}];
        call.answer(false);
    });
    launch([this] {
        choose();
        NSURL* folder = fake::lastCall("-[NSSavePanel setDirectoryURL:]").object(0);
        EXPECT_STREQ(folder.path.UTF8String, "/Users/rb/Desktop");
        finish(NSModalResponseOK, @"/Users/rb/Desktop/a.txt");
        fake::advance(0.1);
        EXPECT_TRUE(fake::called("-[NSAlert setMessageText:] @\"无法创建文本文件\""));
        EXPECT_TRUE(fake::called("-[NSAlert setInformativeText:] @\"磁盘已满。\""));
    });
}

TEST_F(NewTextTest, quittingWithTheOpenPanelTakesItAway) {
    finderSays(@"/f");
    launch([this] { choose(); });
    EXPECT_EQ(fake::calls("-[NSSavePanel cancel:]").size(), 1u);
}

// The workflow in the resources and the one that is installed, each with its version.
class WorkflowTest : public ProgramTest {
protected:
    void workflows(NSString* bundled, NSString* installed) {
        fake::answer(NSBundle.mainBundle, "URLForResource:withExtension:", [NSURL fileURLWithPath:@"/app/NewText.workflow"]);
        fake::answer("-[NSFileManager createDirectoryAtPath:withIntermediateDirectories:attributes:error:]", true);
        fake::answer("-[NSFileManager copyItemAtURL:toURL:error:]", true);
        fake::answer("-[NSFileManager removeItemAtURL:error:]", true);
        fake::answer("-[NSFileManager fileExistsAtPath:]", installed != nil);
        fake::onCall("+[NSData dataWithContentsOfURL:]", [=](fake::Call& call) {
            NSURL* url = call.object(0);
            NSString* version = [url.path hasPrefix:@"/app/"] ? bundled : installed;
            call.answer([version dataUsingEncoding:NSUTF8StringEncoding]);
        });
        fake::onCall("+[NSPropertyListSerialization propertyListWithData:options:format:error:]", [](fake::Call& call) {
            NSString* version = [[NSString alloc] initWithData:call.object(0) encoding:NSUTF8StringEncoding];
            call.answer(version.length > 0 ? @{@"CFBundleShortVersionString" : version} : @{});
        });
    }
    static std::size_t copies() { return fake::calls("-[NSFileManager copyItemAtURL:toURL:error:]").size(); }
    static std::size_t removals() { return fake::calls("-[NSFileManager removeItemAtURL:error:]").size(); }
};

TEST_F(WorkflowTest, isCopiedWhereItIsMissing) {
    workflows(@"1.0", nil);
    launch([] {
        ASSERT_EQ(copies(), 1u);
        EXPECT_EQ(removals(), 0u);
        NSURL* target = fake::lastCall("-[NSFileManager copyItemAtURL:toURL:error:]").object(1);
        EXPECT_STREQ(target.path.UTF8String, "/Users/test/Library/Services/新建 TXT（Rook Bay）.workflow");
        EXPECT_EQ(fake::calls("NSUpdateDynamicServices").size(), 1u);
    });
}

TEST_F(WorkflowTest, isLeftAloneInTheSameVersion) {
    workflows(@"1.0", @"1.0");
    launch([] {
        EXPECT_EQ(copies() + removals(), 0u);
        EXPECT_TRUE(fake::calls("NSUpdateDynamicServices").empty());
    });
}

TEST_F(WorkflowTest, isReplacedInAnother) {
    workflows(@"1.1", @"1.0");
    launch([] {
        EXPECT_TRUE(fake::calledInOrder({"-[NSFileManager removeItemAtURL:error:]",
                                         "-[NSFileManager copyItemAtURL:toURL:error:]", "NSUpdateDynamicServices"}));
    });
    workflows(@"1.1", @"");
    fake::forgetCalls();
    launch([] { EXPECT_EQ(copies(), 1u) << "a copy without a version"; });
}

class FeedTest : public ProgramTest {
protected:
    FeedTest() {
        fake::answer(NSBundle.mainBundle, "infoDictionary",
                     @{@"SUFeedURL" : @"https://a.example/x", @"SUPublicEDKey" : @"k", @"RBMirrorFeedURL" : @"https://b.example/x"});
        fake::answer(NSBundle.mainBundle, "privateFrameworksPath", @"/App/Contents/Frameworks");
        fake::answer("+[NSBundle bundleWithPath:]", NSBundle.mainBundle);
        fake::answer("-[NSBundle loadAndReturnError:]", true);
    }
    // One of the two tasks of the probe comes to its end.
    static void finishTask(std::size_t index, NSInteger status, NSString* body, NSError* error = nil) {
        const auto task = fake::calls("-[NSURLSession dataTaskWithURL:completionHandler:]").at(index);
        NSHTTPURLResponse* response = [[NSHTTPURLResponse alloc] init];
        fake::answer(response, "statusCode", status);
        task.block<void (^)(NSData*, NSURLResponse*, NSError*)>(1)([body dataUsingEncoding:NSUTF8StringEncoding],
                                                                    response, error);
        fake::runMainQueue();
    }
    static bool choseMirror() {
        const auto stored = fake::calls("-[NSUserDefaults setObject:forKey:]");
        return std::ranges::any_of(stored, [](const fake::Call& call) {
            return call.string(1) == "RBUseMirrorFeed" && [call.object(0) boolValue];
        });
    }
};

TEST_F(FeedTest, bothFeedsAreProbedAndTheFirstGoodOneIsChosen) {
    launch([this] {
        fake::press(menuItem("检查更新…"));
        EXPECT_TRUE(fake::called("-[NSURLSessionConfiguration setTimeoutIntervalForRequest:] 6"));
        EXPECT_EQ(fake::lastCall("-[NSURLSessionConfiguration setRequestCachePolicy:]").integer(0), 1);
        ASSERT_EQ(fake::calls("-[NSURLSession dataTaskWithURL:completionHandler:]").size(), 2u);
        finishTask(0, 200, @"<html>");
        EXPECT_FALSE(choseMirror());
        EXPECT_TRUE(fake::calls("-[NSURLSession finishTasksAndInvalidate]").empty());
        finishTask(1, 200, @"<rss>");
        EXPECT_TRUE(choseMirror());
        EXPECT_EQ(fake::calls("-[NSURLSession finishTasksAndInvalidate]").size(), 1u);
    });
}

TEST_F(FeedTest, anAnswerAfterTheEndFindsNobody) {
    launch([this] { fake::press(menuItem("检查更新…")); });
    finishTask(1, 200, @"<rss>");
    EXPECT_FALSE(choseMirror());
}

} // namespace

} // namespace rb
