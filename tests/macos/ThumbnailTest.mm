#include "desktops/macos/Bitmap.h"
#include "desktops/macos/Files.h"
#include "desktops/macos/LayerRenderer.h"
#include "desktops/macos/Thumbnails.h"

#include "tests/macos/MacTest.h"

#import <ImageIO/ImageIO.h>
#import <QuickLookThumbnailing/QuickLookThumbnailing.h>
#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>

#include <atomic>
#include <optional>

namespace rb {

namespace {

class ThumbnailTest : public fake::MacTest {
protected:
    using Answer = void (^)(QLThumbnailRepresentation*, NSError*);

    Handle request(std::function<void(std::shared_ptr<const Bitmap>)> answer) {
        return thumbnails_.requestDocumentThumbnail("/a/b.pdf", {60, 60}, 2, std::move(answer));
    }
    static Answer completion() {
        return fake::lastCall("-[QLThumbnailGenerator generateBestRepresentationForRequest:completionHandler:]")
            .block<Answer>(1);
    }
    static QLThumbnailRepresentation* rendering(QLThumbnailRepresentationType type) {
        QLThumbnailRepresentation* made = [[QLThumbnailRepresentation alloc] init];
        fake::answer(made, "type", type);
        return made;
    }

    MacThumbnails thumbnails_;
};

TEST_F(ThumbnailTest, picturesAreDecodedSmallAndUpright) {
    fake::answer("CGImageGetWidth", 320);
    fake::answer("CGImageGetHeight", 240);
    const auto bitmap = thumbnails_.imageThumb("/a/照片.jpg", 320);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_EQ(bitmap->pixelSize(), (Size{320, 240}));
    NSURL* url = fake::lastCall("CGImageSourceCreateWithURL").object(0);
    EXPECT_TRUE(url.fileURL);
    EXPECT_TRUE([url.path isEqualToString:@"/a/照片.jpg"]);
    const auto made = fake::lastCall("CGImageSourceCreateThumbnailAtIndex");
    EXPECT_EQ(made.integer(1), 0);
    EXPECT_TRUE(fake::called("CGImageSourceCreateThumbnailAtIndex"));
    EXPECT_EQ(fake::calls("CGImageRelease").size(), 1u) << "the bitmap has its own share";
}

TEST_F(ThumbnailTest, theOptionsOfThePictureAreExactlyThese) {
    NSDictionary* options = nil;
    fake::onCall("CGImageSourceCreateThumbnailAtIndex", [&](fake::Call& call) { options = call.object(2); });
    thumbnails_.imageThumb("/a/b.png", 320);
    EXPECT_EQ(options.count, 3u);
    EXPECT_TRUE([options[(__bridge id)kCGImageSourceCreateThumbnailFromImageAlways] isEqual:@YES]);
    EXPECT_TRUE([options[(__bridge id)kCGImageSourceCreateThumbnailWithTransform] isEqual:@YES]);
    EXPECT_TRUE([options[(__bridge id)kCGImageSourceThumbnailMaxPixelSize] isEqual:@320]);
    options = nil;
}

TEST_F(ThumbnailTest, unreadablePicturesGiveNothing) {
    fake::answer("CGImageSourceCreateThumbnailAtIndex", nullptr);
    EXPECT_EQ(thumbnails_.imageThumb("/a/broken.png", 320), nullptr);
    fake::answer("CGImageSourceCreateWithURL", nullptr);
    EXPECT_EQ(thumbnails_.imageThumb("/a/gone.png", 320), nullptr);
}

TEST_F(ThumbnailTest, iconsComeFromTheWorkspace) {
    CGContextRef context = CGBitmapContextCreate(nullptr, 1, 1, 8, 0, nullptr, kCGImageAlphaPremultipliedLast);
    CGImageRef picture = CGBitmapContextCreateImage(context);
    CGContextRelease(context);
    fake::answer("-[NSImage CGImageForProposedRect:context:hints:]", static_cast<const void*>(picture));
    {
        const Image icon = thumbnails_.iconForFile("/a/b.pdf");
        const auto* bitmap = std::get_if<std::shared_ptr<const Bitmap>>(&icon);
        ASSERT_NE(bitmap, nullptr);
        EXPECT_EQ(static_cast<const MacBitmap&>(**bitmap).image(), picture);
        EXPECT_EQ(fake::lastCall("-[NSWorkspace iconForFile:]").string(0), "/a/b.pdf");
    }
    CGImageRelease(picture);
    fake::answer("-[NSImage CGImageForProposedRect:context:hints:]", nullptr);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(thumbnails_.iconForFile("/a/b.pdf")));
}

TEST_F(ThumbnailTest, documentsAreRenderedInTheBackgroundAndToldOnTheMainQueue) {
    int told = 0;
    const Handle handle = request([&](std::shared_ptr<const Bitmap> bitmap) {
        EXPECT_NE(bitmap, nullptr);
        ++told;
    });
    const auto made =
        fake::lastCall("-[QLThumbnailGenerationRequest initWithFileAtURL:size:scale:representationTypes:]");
    NSURL* url = made.object(0);
    EXPECT_TRUE([url.path isEqualToString:@"/a/b.pdf"]);
    EXPECT_EQ(made.size(1).width, 60);
    EXPECT_EQ(made.size(1).height, 60);
    EXPECT_EQ(made.real(2), 2);
    EXPECT_EQ(made.integer(3), QLThumbnailGenerationRequestRepresentationTypeThumbnail);
    completion()(rendering(QLThumbnailRepresentationTypeThumbnail), nil);
    EXPECT_EQ(told, 0) << "the generator calls on a queue of its own";
    fake::runMainQueue();
    EXPECT_EQ(told, 1);
}

TEST_F(ThumbnailTest, onlyARealRenderingCounts) {
    int told = 0;
    const Handle handle = request([&](const auto&) { ++told; });
    completion()(rendering(QLThumbnailRepresentationTypeIcon), nil);
    completion()(rendering(QLThumbnailRepresentationTypeLowQualityThumbnail), nil);
    completion()(nil, [NSError errorWithDomain:@"QL" code:1 userInfo:nil]);
    QLThumbnailRepresentation* empty = rendering(QLThumbnailRepresentationTypeThumbnail);
    fake::answer(empty, "CGImage", nullptr);
    completion()(empty, nil);
    fake::runMainQueue();
    EXPECT_EQ(told, 0);
}

TEST_F(ThumbnailTest, aLateAnswerFindsNobody) {
    const auto captured = std::make_shared<int>(0);
    Handle handle = request([captured](const auto&) { ++*captured; });
    const auto generated =
        fake::lastCall("-[QLThumbnailGenerator generateBestRepresentationForRequest:completionHandler:]");
    completion()(rendering(QLThumbnailRepresentationTypeThumbnail), nil); // on its way to the main queue
    handle.reset();
    EXPECT_EQ(fake::lastCall("-[QLThumbnailGenerator cancelRequest:]").object(0), generated.object(0));
    EXPECT_EQ(captured.use_count(), 1) << "what the answer holds goes with the handle";
    completion()(rendering(QLThumbnailRepresentationTypeThumbnail), nil);
    fake::runMainQueue();
    EXPECT_EQ(*captured, 0);
}

TEST_F(ThumbnailTest, theAnswerMayDropItsHandle) {
    std::optional<Handle> handle;
    const auto captured = std::make_shared<int>(0);
    handle = request([&handle, captured](const auto&) {
        handle.reset();
        ++*captured; // still there
    });
    completion()(rendering(QLThumbnailRepresentationTypeThumbnail), nil);
    fake::runMainQueue();
    EXPECT_EQ(*captured, 1);
}

class FilesTest : public fake::MacTest {
protected:
    // Answers for the resource values of any file.
    static void answerValues(NSNumber* isDirectory, id type) {
        fake::onCall("-[NSURL getResourceValue:forKey:error:]", [=](fake::Call& call) {
            const id value = [call.object(1) isEqual:NSURLIsDirectoryKey] ? isDirectory : type;
            *(id __autoreleasing*)call.pointer<void*>(0) = value;
            call.answer(true);
        });
    }
    static UTType* type(bool isImage) {
        UTType* made = [[UTType alloc] init];
        fake::answer(made, "conformsToType:", isImage);
        return made;
    }
};

TEST_F(FilesTest, tellsFoldersPackagesAndPicturesApart) {
    MacFiles files;
    EXPECT_EQ(files.homeDirectory(), "/Users/test");
    EXPECT_FALSE(files.facts("/a/b").exists);
    EXPECT_TRUE(fake::calls("-[NSURL getResourceValue:forKey:error:]").empty());

    fake::answer("-[NSFileManager fileExistsAtPath:]", true);
    answerValues(@NO, type(true));
    FileFacts facts = files.facts("/a/b.png");
    EXPECT_TRUE(facts.exists && facts.isImage);
    EXPECT_FALSE(facts.isDirectory || facts.isPackage);
    EXPECT_TRUE(fake::calls("-[NSWorkspace isFilePackageAtPath:]").empty()) << "a file is no package";

    answerValues(@YES, type(false));
    facts = files.facts("/a/folder");
    EXPECT_TRUE(facts.isDirectory);
    EXPECT_FALSE(facts.isPackage || facts.isImage);
    fake::answer("-[NSWorkspace isFilePackageAtPath:]", true);
    EXPECT_TRUE(files.facts("/a/b.app").isPackage);

    answerValues(nil, nil);
    facts = files.facts("/a/unreadable");
    EXPECT_TRUE(facts.exists);
    EXPECT_FALSE(facts.isDirectory || facts.isPackage || facts.isImage);
}

using LayerRendererTest = fake::MacTest;

TEST_F(LayerRendererTest, drawsACopyOfTheTreeIntoABitmap) {
    const auto layer = Layer::create();
    layer->change().bounds = {2, 3, 150, 128.2};
    const auto hidden = Layer::create();
    hidden->change().hidden = true;
    const auto text = Layer::create();
    text->change().content = TextContent{.text = "名"};
    layer->addSublayer(hidden);
    layer->addSublayer(text);
    layer->setMask(Layer::create());
    NSArray* drawn = nil;
    bool masked = false;
    fake::onCall("-[CALayer renderInContext:]", [&](fake::Call& call) {
        drawn = [call.receiver() sublayers];
        masked = [call.receiver() mask] != nil;
    });
    {
        MacLayerRenderer renderer;
        EXPECT_NE(renderer.render(*layer, 2), nullptr);
    }
    ASSERT_EQ(drawn.count, 2u);
    EXPECT_TRUE([drawn[0] isHidden]);
    EXPECT_TRUE([drawn[1] isMemberOfClass:CATextLayer.class]);
    EXPECT_TRUE(masked);
    const auto context = fake::lastCall("CGBitmapContextCreate");
    EXPECT_EQ(context.integer(1), 300);
    EXPECT_EQ(context.integer(2), 257) << "a started pixel counts";
    EXPECT_TRUE(fake::calledInOrder({"CGContextScaleCTM", "CGContextTranslateCTM", "-[CALayer renderInContext:]",
                                     "CGBitmapContextCreateImage", "CGContextRelease"}));
    EXPECT_EQ(fake::lastCall("CGContextTranslateCTM").real(2), -3);
    drawn = nil;
}

TEST_F(LayerRendererTest, withoutSizeOrMemoryThereIsNoPicture) {
    MacLayerRenderer renderer;
    const auto layer = Layer::create();
    EXPECT_EQ(renderer.render(*layer, 2), nullptr);
    layer->change().bounds = {0, 0, 10, 10};
    fake::answer("CGBitmapContextCreateImage", nullptr);
    EXPECT_EQ(renderer.render(*layer, 2), nullptr);
    fake::answer("CGBitmapContextCreate", nullptr);
    EXPECT_EQ(renderer.render(*layer, 2), nullptr);
    EXPECT_EQ(fake::calls("CGContextRelease").size(), 1u);
}

TEST_F(ThumbnailTest, onlyTheBeginningTellsWhetherAFileIsAPicture) {
    fake::answer("CGImageSourceGetType", @"public.jpeg");
    fake::answer("CGImageSourceGetCount", 1);
    EXPECT_TRUE(thumbnails_.canDecode("/a/照片.jpg"));
    EXPECT_FALSE(fake::called("CGImageSourceCreateImageAtIndex"));
    fake::answer("CGImageSourceGetCount", 0);
    EXPECT_FALSE(thumbnails_.canDecode("/a/b.jpg"));
    fake::answer("CGImageSourceCreateWithURL", nil);
    EXPECT_FALSE(thumbnails_.canDecode("/a/b.jpg"));
}

TEST_F(ThumbnailTest, aPictureIsPackedAsPngUnlessNobodyWantsIt) {
    const auto data = std::make_shared<const Bytes>(Bytes{'j', 'p', 'g'});
    fake::answer("-[NSImage TIFFRepresentation]", [NSData dataWithBytes:"tif" length:3]);
    fake::answer("-[NSBitmapImageRep representationUsingType:properties:]", [NSData dataWithBytes:"png" length:3]);
    const std::atomic<bool> givenUp = true;
    EXPECT_EQ(thumbnails_.pngData(data, givenUp), nullptr);
    EXPECT_FALSE(fake::called("-[NSImage TIFFRepresentation]"));
    const std::atomic<bool> wanted = false;
    const SharedBytes png = thumbnails_.pngData(data, wanted);
    ASSERT_TRUE(png);
    EXPECT_EQ(*png, (Bytes{'p', 'n', 'g'}));
    EXPECT_TRUE([fake::lastCall("-[NSImage initWithData:]").object(0) isEqual:[NSData dataWithBytes:"jpg" length:3]]);
    fake::answer("-[NSImage TIFFRepresentation]", nil);
    EXPECT_EQ(thumbnails_.pngData(data, wanted), nullptr);
}

} // namespace

} // namespace rb
