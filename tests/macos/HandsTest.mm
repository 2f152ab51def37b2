#include "desktops/macos/DragPasteboard.h"
#include "desktops/macos/FileOperations.h"
#include "desktops/macos/PanelView.h"
#include "desktops/macos/Panels.h"
#include "desktops/macos/Pasteboards.h"
#include "desktops/macos/PreviewPanel.h"
#include "desktops/macos/RunLoop.h"
#include "desktops/macos/Sounds.h"
#include "desktops/macos/Workspace.h"

#include "tests/macos/MacTest.h"

#import <Quartz/Quartz.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <thread>
#include <unistd.h>

// A drag as AppKit hands it to a view, as far as anyone asks.
@interface RBTestDrag : NSObject
@property(nonatomic) NSDragOperation mask;
@property(nonatomic) id source;
@property(nonatomic) NSPoint place;
@property(nonatomic) NSPasteboard* board;
@end

@implementation RBTestDrag
- (NSDragOperation)draggingSourceOperationMask {
    return self.mask;
}
- (id)draggingSource {
    return self.source;
}
- (NSPoint)draggingLocation {
    return self.place;
}
- (NSPasteboard*)draggingPasteboard {
    return self.board;
}
@end

namespace rb {

namespace {

constexpr std::uint32_t outside = CopyOperation | MoveOperation | DeleteOperation;

// Writes down what a panel tells its input.
class ToldInput : public PanelInput {
public:
    void mouseDown(const PanelMouseEvent& event) override { tell("down", event); }
    void mouseDragged(const PanelMouseEvent& event) override {
        tell("dragged", event);
        if (onDragged) {
            onDragged();
        }
    }
    void mouseUp(const PanelMouseEvent& event) override { tell("up", event); }
    void rightMouseDown(const PanelMouseEvent& event) override {
        tell("right", event);
        if (onRight) {
            onRight();
        }
    }
    void pressureChanged(int stage) override { told.push_back("stage " + std::to_string(stage)); }
    std::uint32_t dragUpdated(const DraggingInfo& drag) override {
        told.push_back("over " + std::to_string(static_cast<int>(drag.location().x)) + " mask " +
                       std::to_string(drag.sourceOperationMask()) + (drag.isFromThisProgram() ? " own" : ""));
        for (const std::string& file : drag.files()) {
            told.back() += " " + file;
        }
        return MoveOperation;
    }
    void dragExited() override { told.emplace_back("exited"); }
    bool performDrop(const DraggingInfo& drag) override {
        told.push_back("drop of " + std::to_string(drag.files().size()));
        return !drag.files().empty();
    }

    std::vector<std::string> take() { return std::exchange(told, {}); }

    std::function<void()> onDragged;
    std::function<void()> onRight;
    std::vector<std::string> told;

private:
    void tell(const std::string& what, const PanelMouseEvent& event) {
        told.push_back(what + " " + std::to_string(static_cast<int>(event.location.x)) + "," +
                       std::to_string(static_cast<int>(event.location.y)) + " ×" + std::to_string(event.clickCount));
        if ((event.modifierFlags & ShiftModifier) != 0) {
            told.back() += " shift";
        }
    }
};

using Told = std::vector<std::string>;

class HandsTest : public fake::MacTest {
protected:
    void SetUp() override {
        // The window's coordinates lie elsewhere, so that nobody takes them for the view's.
        fake::onCall("-[NSView convertPoint:fromView:]", [](fake::Call& call) {
            const CGPoint point = call.point(0);
            call.answer(CGPointMake(point.x - 1000, point.y - 500));
        });
        panel_ = MacPanels().createPanel({.frame = {100, 600, 400, 200}, .acceptsFiles = true});
        panel_->setInput(&input_);
        view_ = fake::lastCall("-[NSView registerForDraggedTypes:]").receiver();
    }
    void TearDown() override {
        view_ = nil;
        panel_.reset();
        MacTest::TearDown();
    }
    static NSEvent* event(double x, double y, NSInteger clicks = 1, NSUInteger flags = 0) {
        NSEvent* made = [[NSEvent alloc] init];
        fake::answer(made, "locationInWindow", CGPointMake(x + 1000, y + 500));
        fake::answer(made, "clickCount", clicks);
        fake::answer(made, "modifierFlags", flags);
        return made;
    }
    void press(NSInteger stage) {
        NSEvent* made = [[NSEvent alloc] init];
        fake::answer(made, "stage", stage);
        [view_ pressureChangeWithEvent:made];
    }
    // A press that becomes a drag; gives how often the end was told, and with what.
    std::shared_ptr<Told> dragOut() {
        const auto ends = std::make_shared<Told>();
        input_.onDragged = [this, ends] {
            panel_->beginDrag({.path = "/a b.png",
                               .frame = {10, 20, 30, 40},
                               .operationsInside = MoveOperation,
                               .operationsOutside = outside,
                               .ended = [ends](std::uint32_t done) { ends->push_back(std::to_string(done)); }});
        };
        [view_ mouseDown:event(10, 20)];
        [view_ mouseDragged:event(16, 20)];
        return ends;
    }

    ToldInput input_;
    std::unique_ptr<Panel> panel_;
    RBMacPanelView* view_ = nil;
};

TEST_F(HandsTest, PressesReachTheInputOnceAndInItsCoordinates) {
    EXPECT_TRUE([view_ acceptsFirstMouse:event(1, 1)]) << "a click on a panel of a program in the background counts";
    [view_ mouseDown:event(10, 20)];
    [view_ mouseDragged:event(12, 21, 1, NSEventModifierFlagShift)];
    [view_ mouseUp:event(12, 21, 2)];
    [view_ rightMouseDown:event(5, 6)];
    EXPECT_EQ(input_.take(), (Told{"down 10,20 ×1", "dragged 12,21 ×1 shift", "up 12,21 ×2", "right 5,6 ×1"}));
    // As everywhere, a click with Control is the other click.
    [view_ mouseDown:event(7, 8, 1, NSEventModifierFlagControl)];
    EXPECT_EQ(input_.take(), (Told{"right 7,8 ×1"}));
    panel_->setInput(nullptr);
    [view_ mouseDown:event(1, 1)];
    [view_ mouseUp:event(1, 1)];
    EXPECT_EQ(input_.take(), Told{});
}

TEST_F(HandsTest, PressureIsToldWhenItsStageChanges) {
    [view_ mouseDown:event(10, 20)];
    for (const NSInteger stage : {1, 1, 2, 2, 1, 0}) {
        press(stage);
    }
    [view_ mouseDown:event(10, 20)];
    press(1);
    EXPECT_EQ(input_.take(),
              (Told{"down 10,20 ×1", "stage 1", "stage 2", "stage 1", "stage 0", "down 10,20 ×1", "stage 1"}));
}

TEST_F(HandsTest, ACardIsDraggedWithItsFileItsPictureAndTheMasksGiven) {
    const auto ends = dragOut();
    EXPECT_TRUE(fake::called("-[NSDraggingItem setDraggingFrame:contents:] {{10, 20}, {30, 40}}, nil"));
    const auto begun = fake::lastCall("-[NSView beginDraggingSessionWithItems:event:source:]");
    EXPECT_EQ([static_cast<NSArray*>(begun.object(0)) count], 1U);
    EXPECT_EQ(begun.object(2), view_);
    NSURL* url = fake::lastCall("-[NSDraggingItem initWithPasteboardWriter:]").object(0);
    EXPECT_STREQ(url.path.UTF8String, "/a b.png");
    EXPECT_TRUE(fake::called("-[NSDraggingSession setAnimatesToStartingPositionsOnCancelOrFail:] YES"));

    NSDraggingSession* session = [[NSDraggingSession alloc] init];
    EXPECT_EQ([view_ draggingSession:session sourceOperationMaskForDraggingContext:NSDraggingContextWithinApplication],
              NSDragOperationMove);
    EXPECT_EQ([view_ draggingSession:session sourceOperationMaskForDraggingContext:NSDraggingContextOutsideApplication],
              NSDragOperationCopy | NSDragOperationMove | NSDragOperationDelete);
    [view_ draggingSession:session endedAtPoint:NSZeroPoint operation:NSDragOperationDelete];
    [view_ draggingSession:session endedAtPoint:NSZeroPoint operation:NSDragOperationCopy];
    EXPECT_EQ(*ends, Told{"32"}) << "told once";
    EXPECT_EQ([view_ draggingSession:session sourceOperationMaskForDraggingContext:NSDraggingContextOutsideApplication],
              NSDragOperationNone)
        << "nothing is dragged any more";
}

TEST_F(HandsTest, ADragThatOutlivesItsPanelTellsNobody) {
    const auto ends = dragOut();
    RBMacPanelView* kept = view_; // as its session keeps it
    panel_.reset();
    [kept draggingSession:[[NSDraggingSession alloc] init] endedAtPoint:NSZeroPoint operation:NSDragOperationMove];
    EXPECT_EQ(*ends, Told{});
    [kept mouseUp:event(1, 1)];
    EXPECT_EQ(input_.take(), (Told{"down 10,20 ×1", "dragged 16,20 ×1"}));
}

TEST_F(HandsTest, DragsOverAPanelAreToldWithTheirFiles) {
    EXPECT_TRUE(fake::called("-[NSView registerForDraggedTypes:] @[@\"NSPasteboardTypeFileURL\"]"));
    RBTestDrag* drag = [[RBTestDrag alloc] init];
    const id info = drag;
    drag.board = [[NSPasteboard alloc] init];
    drag.mask = NSDragOperationCopy | NSDragOperationMove;
    drag.place = NSMakePoint(1042, 507);
    fake::answer("-[NSPasteboard readObjectsForClasses:options:]",
                 @[ [NSURL fileURLWithPath:@"/a"], [NSURL fileURLWithPath:@"/文件"] ]);
    EXPECT_EQ([view_ draggingEntered:info], NSDragOperationMove);
    drag.source = view_;
    drag.place = NSMakePoint(1043, 507);
    EXPECT_EQ([view_ draggingUpdated:info], NSDragOperationMove);
    [view_ draggingExited:info];
    EXPECT_TRUE([view_ performDragOperation:info]);
    // Only file URLs are asked for; what can't be read is nothing.
    NSDictionary* options = fake::lastCall("-[NSPasteboard readObjectsForClasses:options:]").object(1);
    EXPECT_EQ([options[NSPasteboardURLReadingFileURLsOnlyKey] boolValue], YES);
    fake::answer("-[NSPasteboard readObjectsForClasses:options:]", id(nil));
    EXPECT_FALSE([view_ performDragOperation:info]);
    EXPECT_EQ(input_.take(),
              (Told{"over 42 mask 17 /a /文件", "over 43 mask 17 own /a /文件", "exited", "drop of 2", "drop of 0"}));
    panel_->setInput(nullptr);
    EXPECT_EQ([view_ draggingEntered:info], NSDragOperationNone);
    EXPECT_FALSE([view_ performDragOperation:info]);
}

TEST_F(HandsTest, AContextMenuOpensForThePressAndTellsItsEnd) {
    auto menu = std::make_shared<Menu>();
    menu->autoenablesItems = false;
    int chosen = 0;
    menu->addItem({.title = "复制", .action = [&](MenuItem&) { ++chosen; }});
    menu->addItem({.title = "取下左边全部", .action = [&](MenuItem&) { ++chosen; }, .enabled = false});
    Told order;
    fake::onCall("+[NSMenu popUpContextMenu:withEvent:forView:]", [&](fake::Call& call) {
        NSMenu* shown = call.object(0);
        order.push_back("open with " + std::to_string(shown.numberOfItems));
        EXPECT_FALSE(shown.itemArray[1].enabled);
        fake::press(shown.itemArray[0]);
    });
    NSEvent* right = event(5, 6);
    input_.onRight = [&] { panel_->showContextMenu(menu, {5, 6}, [&] { order.emplace_back("closed"); }); };
    [view_ rightMouseDown:right];
    EXPECT_EQ(order, (Told{"open with 2", "closed"}));
    EXPECT_EQ(chosen, 1);
    EXPECT_EQ(fake::lastCall("+[NSMenu popUpContextMenu:withEvent:forView:]").object(1), right);
    // Outside a press there is nothing that AppKit could open it for.
    panel_->showContextMenu(menu, {5, 6}, [&] { order.emplace_back("closed"); });
    EXPECT_EQ(order.size(), 3U);
    EXPECT_TRUE(fake::calledTimes(1, "+[NSMenu popUpContextMenu:withEvent:forView:]"));
}

TEST_F(HandsTest, APanelThatGoesWhileItsMenuIsOpenStillHearsOfTheEnd) {
    bool closed = false;
    fake::onCall("+[NSMenu popUpContextMenu:withEvent:forView:]", [&](fake::Call&) { panel_.reset(); });
    input_.onRight = [&] { panel_->showContextMenu(std::make_shared<Menu>(), {}, [&] { closed = true; }); };
    [view_ rightMouseDown:event(5, 6)];
    EXPECT_TRUE(closed);
}

// The preview panel

class Previewed final : public PreviewPanelDelegate {
public:
    std::size_t numberOfPreviewItems() override { return paths.size(); }
    std::optional<std::string> previewItemAtIndex(std::size_t index) override {
        return index < paths.size() ? std::optional(paths[index]) : std::nullopt;
    }
    bool handleEvent(const KeyEvent& event) override {
        keys.push_back(event.keyCode);
        return event.keyCode == 123;
    }
    std::vector<std::string> paths{"/a.png", "/b.txt"};
    std::vector<std::uint32_t> keys;
};

class PreviewPanelTest : public fake::MacTest {
protected:
    void SetUp() override {
        shared_ = [[QLPreviewPanel alloc] init];
        fake::answer("+[QLPreviewPanel sharedPreviewPanel]", shared_);
        fake::answer("+[QLPreviewPanel sharedPreviewPanelExists]", true);
    }
    void TearDown() override {
        shared_ = nil;
        MacTest::TearDown();
    }
    QLPreviewPanel* shared_;
    Previewed previewed_;
};

TEST_F(PreviewPanelTest, AsksItsControllerForItemsAndKeys) {
    MacPreviewPanel panel;
    panel.setDelegate(&previewed_);
    id<QLPreviewPanelDataSource, QLPreviewPanelDelegate> source =
        fake::lastCall("-[QLPreviewPanel setDataSource:]").object(0);
    ASSERT_NE(source, nil);
    EXPECT_EQ([source numberOfPreviewItemsInPreviewPanel:shared_], 2);
    EXPECT_STREQ([static_cast<NSURL*>([source previewPanel:shared_ previewItemAtIndex:1]) path].UTF8String, "/b.txt");
    for (const NSInteger index : {-1, 2, 1000}) {
        EXPECT_EQ([source previewPanel:shared_ previewItemAtIndex:index], nil) << index;
    }
    NSEvent* key = [[NSEvent alloc] init];
    fake::answer(key, "type", NSEventTypeKeyDown);
    fake::answer(key, "keyCode", 123);
    EXPECT_TRUE([source previewPanel:shared_ handleEvent:key]);
    fake::answer(key, "keyCode", 49);
    EXPECT_FALSE([source previewPanel:shared_ handleEvent:key]);
    fake::answer(key, "type", NSEventTypeKeyUp);
    fake::answer(key, "keyCode", 123);
    EXPECT_FALSE([source previewPanel:shared_ handleEvent:key]) << "only presses";
    EXPECT_EQ(previewed_.keys, (std::vector<std::uint32_t>{123, 49}));

    panel.setDelegate(nullptr);
    EXPECT_EQ(fake::lastCall("-[QLPreviewPanel setDataSource:]").object(0), nil);
    EXPECT_EQ(fake::lastCall("-[QLPreviewPanel setDelegate:]").object(0), nil);
    EXPECT_EQ([source numberOfPreviewItemsInPreviewPanel:shared_], 0);
}

TEST_F(PreviewPanelTest, IsLeftWithoutDanglingReferences) {
    {
        MacPreviewPanel panel;
        panel.setDelegate(&previewed_);
    }
    EXPECT_EQ(fake::lastCall("-[QLPreviewPanel setDataSource:]").object(0), nil);
    EXPECT_EQ(fake::lastCall("-[QLPreviewPanel setDelegate:]").object(0), nil);
}

// Files

class FileHandsTest : public fake::MacTest {
protected:
    FileOperations::Done remember() {
        return [this](const std::optional<FileFailure>& failure) { told_.push_back(failure); };
    }
    static void failWith(const std::string& selector, NSInteger code) {
        fake::onCall(selector, [code](fake::Call& call) {
            *call.pointer<NSError * __autoreleasing*>(2) =
                [NSError errorWithDomain:NSCocoaErrorDomain code:code userInfo:@{NSLocalizedDescriptionKey : @"Why"}];
            call.answer(false);
        });
    }

    MacRunLoop loop_;
    MacFileOperations files_{loop_};
    std::vector<std::optional<FileFailure>> told_;
};

TEST_F(FileHandsTest, AMoveOnOneVolumeIsARenameThatTellsANamesakeFromOtherFailures) {
    const std::string rename = "-[NSFileManager moveItemAtURL:toURL:error:]";
    fake::answer(rename, true);
    files_.moveItem("/a", "/b", remember());
    ASSERT_EQ(told_.size(), 1U) << "at once";
    EXPECT_FALSE(told_[0]);
    for (const NSInteger code : {NSFileWriteFileExistsError, NSFileWriteOutOfSpaceError}) {
        failWith(rename, code);
        files_.moveItem("/a", "/b", remember());
        ASSERT_TRUE(told_.back());
        EXPECT_EQ(told_.back()->targetExists, code == NSFileWriteFileExistsError);
    }
}

TEST_F(FileHandsTest, ACopyIsMadeAsideInTheBackgroundAndToldInALaterTurn) {
    fake::answer("-[NSFileManager URLForDirectory:inDomain:appropriateForURL:create:error:]",
                 [NSURL fileURLWithPath:@"/aside"]);
    fake::answer("-[NSFileManager copyItemAtURL:toURL:error:]", true);
    fake::answer("-[NSFileManager contentsEqualAtPath:andPath:]", true);
    failWith("-[NSFileManager moveItemAtURL:toURL:error:]", NSFileWriteFileExistsError);
    files_.copyItem("/a", "/b", remember());
    EXPECT_TRUE(told_.empty());
    fake::advance(0);
    ASSERT_EQ(told_.size(), 1U);
    ASSERT_TRUE(told_[0]);
    EXPECT_TRUE(told_[0]->targetExists);
    EXPECT_TRUE(fake::calledInOrder(
        {"-[NSFileManager copyItemAtURL:toURL:error:]", "-[NSFileManager contentsEqualAtPath:andPath:]",
         "-[NSFileManager moveItemAtURL:toURL:error:]", "-[NSFileManager removeItemAtURL:error:]"}));
    NSURL* removed = fake::lastCall("-[NSFileManager removeItemAtURL:error:]").object(0);
    EXPECT_STREQ(removed.path.UTF8String, "/aside") << "and nothing of the user's";
}

TEST_F(FileHandsTest, TheTrashIsTheSystemsAndNeverADeletion) {
    fake::answer("-[NSFileManager trashItemAtURL:resultingItemURL:error:]", false);
    files_.trashItem("/a b", remember());
    ASSERT_EQ(told_.size(), 1U);
    EXPECT_TRUE(told_[0]);
    NSURL* url = fake::lastCall("-[NSFileManager trashItemAtURL:resultingItemURL:error:]").object(0);
    EXPECT_STREQ(url.path.UTF8String, "/a b");
    fake::answer("-[NSFileManager trashItemAtURL:resultingItemURL:error:]", true);
    files_.trashItem("/a b", remember());
    EXPECT_FALSE(told_.back());
    EXPECT_FALSE(fake::called("-[NSFileManager removeItemAtURL:error:]"));
    EXPECT_FALSE(fake::called("-[NSFileManager removeItemAtPath:error:]"));
}

TEST_F(FileHandsTest, APictureIsOneItemOfBytesAndFile) {
    MacPasteboard board;
    fake::answer("-[NSPasteboard writeObjects:]", true);
    const auto png = std::make_shared<const Bytes>(Bytes{1, 2, 3});
    EXPECT_TRUE(board.write(PasteboardPictureFile{.path = "/图 1.png", .png = PromisedBytes::settled(png)}));
    EXPECT_TRUE(fake::calledInOrder({"-[NSPasteboardItem setData:forType:]", "-[NSPasteboardItem setString:forType:]",
                                     "-[NSPasteboard clearContents]", "-[NSPasteboard writeObjects:]"}));
    EXPECT_EQ([static_cast<NSArray*>(fake::lastCall("-[NSPasteboard writeObjects:]").object(0)) count], 1U);
    EXPECT_TRUE(fake::lastCall("-[NSPasteboardItem setString:forType:]").string(0).starts_with("file:///"));
    fake::forgetCalls();
    EXPECT_TRUE(board.write(PasteboardPictureFile{.path = "/a.txt", .png = nullptr}));
    EXPECT_FALSE(fake::called("-[NSPasteboardItem setData:forType:]"));
    EXPECT_TRUE(board.write(PasteboardPictureFile{.path = "/a.jpg", .png = PromisedBytes::settled(nullptr)}));
    EXPECT_FALSE(fake::called("-[NSPasteboardItem setData:forType:]"));
    EXPECT_FALSE(fake::called("-[NSPasteboardItem setDataProvider:forTypes:]"));
}

// Work in the background runs in a thread of its own.
class ThreadedRunLoop : public RunLoop {
public:
    ~ThreadedRunLoop() override { join(); }
    double now() const override { return main_.now(); }
    double wallClock() const override { return main_.wallClock(); }
    void post(std::function<void()> work) override { main_.post(std::move(work)); }
    Handle after(double delay, std::function<void()> work) override { return main_.after(delay, std::move(work)); }
    Handle every(double interval, double tolerance, std::function<void()> work) override {
        return main_.every(interval, tolerance, std::move(work));
    }
    void background(QualityOfService /*quality*/, std::function<void()> work) override {
        thread_ = std::thread(std::move(work));
    }
    void join() {
        if (thread_.joinable()) {
            thread_.join();
        }
    }

private:
    MacRunLoop main_;
    std::thread thread_;
};

class PromisedPictureTest : public FileHandsTest {
protected:
    PromisedPictureTest() {
        fake::answer("-[NSPasteboard writeObjects:]", true);
        fake::answer("-[NSPasteboard setString:forType:]", true);
    }

    id<NSPasteboardItemDataProvider> provider() {
        return fake::lastCall("-[NSPasteboardItem setDataProvider:forTypes:]").object(0);
    }
    // The system asks for the picture, as when somebody pastes; what it gets.
    std::string paste() {
        fake::forgetCalls();
        NSPasteboardItem* item = [[NSPasteboardItem alloc] init];
        [provider_ pasteboard:nil item:item provideDataForType:NSPasteboardTypePNG];
        if (!fake::called("-[NSPasteboardItem setData:forType:]")) {
            return "nothing";
        }
        const auto set = fake::lastCall("-[NSPasteboardItem setData:forType:]");
        EXPECT_TRUE([set.object(1) isEqual:NSPasteboardTypePNG]);
        NSData* data = set.object(0);
        return {static_cast<const char*>(data.bytes), data.length};
    }
    template <typename Loop>
    void copy(Loop& loop, MacPasteboard& board, SharedBytes made) {
        auto promise = PromisedBytes::begin(loop, [made](const std::atomic<bool>&) { return made; });
        promise_ = promise;
        EXPECT_TRUE(board.write(PasteboardPictureFile{.path = "/a.jpg", .png = std::move(promise)}));
        provider_ = provider();
    }

    __weak id<NSPasteboardItemDataProvider> provider_;
    std::weak_ptr<PromisedBytes> promise_;
};

TEST_F(PromisedPictureTest, ThePictureIsPromisedBesideItsFileAndGivenWhenItIsThere) {
    @autoreleasepool {
        MacRunLoop loop;
        MacPasteboard board;
        copy(loop, board, std::make_shared<const Bytes>(Bytes{'p', 'n', 'g'}));
        const auto promised = fake::lastCall("-[NSPasteboardItem setDataProvider:forTypes:]");
        EXPECT_TRUE([promised.object(1) isEqual:@[ NSPasteboardTypePNG ]]);
        EXPECT_TRUE(fake::calledInOrder({"-[NSPasteboardItem setDataProvider:forTypes:]",
                                         "-[NSPasteboardItem setString:forType:]", "-[NSPasteboard clearContents]",
                                         "-[NSPasteboard writeObjects:]"}));
        EXPECT_FALSE(fake::called("-[NSPasteboardItem setData:forType:]")) << "nothing waits for it";
        fake::advance(0);
        EXPECT_EQ(paste(), "png");
        EXPECT_EQ(paste(), "png");
        [provider_ pasteboardFinishedWithDataProvider:NSPasteboard.generalPasteboard];
        EXPECT_TRUE(promise_.expired()) << "another program has copied";
        EXPECT_EQ(paste(), "nothing");
    }
}

TEST_F(PromisedPictureTest, AskedForTooEarlyItIsWaitedFor) {
    @autoreleasepool {
        ThreadedRunLoop loop;
        MacPasteboard board;
        copy(loop, board, std::make_shared<const Bytes>(Bytes{'p', 'n', 'g'}));
        if (provider_ != nil) { // the thread may have been quicker
            EXPECT_EQ(paste(), "png");
        }
        loop.join();
        fake::runMainQueue();
    }
}

TEST_F(PromisedPictureTest, OneThatCannotBeMadeGivesNothing) {
    @autoreleasepool {
        MacRunLoop loop;
        MacPasteboard board;
        copy(loop, board, nullptr);
        fake::advance(0);
        EXPECT_EQ(paste(), "nothing");
        EXPECT_TRUE(board.write(std::string("text")));
        EXPECT_TRUE(promise_.expired());
        EXPECT_EQ(provider_, nil);
    }
}

TEST_F(FileHandsTest, AnOpenedFileIsReadWhateverBecomesOfItsName) {
    std::string folder = "/tmp/rookbay-mac-XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    const std::string path = folder + "/a";
    const auto write = [&](const std::string& text) { std::ofstream(path) << text; };
    const std::atomic<bool> wanted = false;
    const std::atomic<bool> givenUp = true;
    write("bytes");
    const auto removed = files_.open(path, 5);
    EXPECT_EQ(files_.open(path, 4), nullptr) << "too large";
    EXPECT_EQ(files_.open(folder, 5), nullptr);
    std::remove(path.c_str());
    EXPECT_EQ(files_.open(path, 5), nullptr);
    ASSERT_TRUE(removed);
    EXPECT_EQ(removed->contents(givenUp), nullptr);
    const SharedBytes bytes = removed->contents(wanted);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(std::string(bytes->begin(), bytes->end()), "bytes");
    write("bytes");
    const auto changed = files_.open(path, 5);
    write("byt");
    EXPECT_EQ(changed->contents(wanted), nullptr);
    std::remove(path.c_str());
    rmdir(folder.c_str());
}

TEST_F(FileHandsTest, OpeningAnswersOnceOnTheMainThread) {
    MacWorkspace workspace;
    Told answers;
    workspace.openFile("/a.pdf", [&](bool opened) { answers.emplace_back(opened ? "opened" : "failed"); });
    const auto open = fake::lastCall("-[NSWorkspace openURL:configuration:completionHandler:]");
    open.block<void (^)(NSRunningApplication*, NSError*)>(2)(nil, nil);
    EXPECT_EQ(answers, Told{}) << "a later turn";
    fake::runMainQueue();
    open.block<void (^)(NSRunningApplication*, NSError*)>(2)(nil, [NSError errorWithDomain:@"x" code:1 userInfo:nil]);
    fake::runMainQueue();
    EXPECT_EQ(answers, (Told{"opened", "failed"}));
    workspace.openFile("/a.pdf", nullptr);
    fake::lastCall("-[NSWorkspace openURL:configuration:completionHandler:]")
        .block<void (^)(NSRunningApplication*, NSError*)>(2)(nil, nil);
    fake::runMainQueue();
    workspace.revealFiles({"/a", "/b"});
    EXPECT_EQ(
        [static_cast<NSArray*>(fake::lastCall("-[NSWorkspace activateFileViewerSelectingURLs:]").object(0)) count], 2U);
}

TEST_F(FileHandsTest, TheTrashSoundIsTheSystemsOwnFile) {
    fake::answer("-[NSSound play]", false);
    MacSounds sounds;
    sounds.playTrash();
    const auto loaded = fake::lastCall("-[NSSound initWithContentsOfFile:byReference:]");
    EXPECT_EQ(loaded.string(0),
              "/System/Library/Components/CoreAudio.component/Contents/SharedSupport/SystemSounds/dock/"
              "drag to trash.aif");
    EXPECT_EQ(loaded.integer(1), 1) << "by reference";
    EXPECT_TRUE(fake::called("-[NSSound play]"));
}

} // namespace

} // namespace rb
