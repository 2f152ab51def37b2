#include "desktops/macos/Pasteboards.h"

#include "desktops/macos/Bridge.h"

#import <AppKit/AppKit.h>

namespace {

constexpr double mostPatience = 5; // seconds that whoever pastes waits with us

} // namespace

// Gives a picture, which may still be in the making, to whoever pastes it.
@interface RBPromisedPicture : NSObject <NSPasteboardItemDataProvider> {
@public
    std::shared_ptr<rb::PromisedBytes> _promised;
}
@end

@implementation RBPromisedPicture

- (void)pasteboard:(NSPasteboard*)pasteboard item:(NSPasteboardItem*)item provideDataForType:(NSPasteboardType)type {
    const rb::SharedBytes bytes = _promised ? _promised->await(mostPatience) : nullptr;
    if (bytes) {
        [item setData:[NSData dataWithBytes:bytes->data() length:bytes->size()] forType:type];
    }
}

- (void)pasteboardFinishedWithDataProvider:(NSPasteboard*)pasteboard {
    _promised = nullptr;
}

@end

namespace rb {

struct MacPasteboard::Promise {
    RBPromisedPicture* provider;
};

namespace {

NSPasteboard* board() {
    return NSPasteboard.generalPasteboard;
}

NSArray<NSURL*>* fileUrls() {
    return [board() readObjectsForClasses:@[ NSURL.class ] options:@{NSPasteboardURLReadingFileURLsOnlyKey : @YES}];
}

bool offers(const std::string& type) {
    if (type == PasteboardType::FileUrl) {
        // Also what programs of old give as names of files.
        return [board() canReadObjectForClasses:@[ NSURL.class ]
                                        options:@{
                                            NSPasteboardURLReadingFileURLsOnlyKey : @YES
                                        }] != NO;
    }
    return [board() availableTypeFromArray:@[ nsString(type) ]] != nil;
}

struct Write {
    RBPromisedPicture* provider; // of the picture that is still being made

    bool operator()(const std::string& text) const {
        [board() clearContents];
        return [board() setString:textFrom(text) forType:NSPasteboardTypeString] != NO;
    }
    bool operator()(const PasteboardData& data) const {
        [board() clearContents];
        return [board() setData:[NSData dataWithBytes:data.bytes->data() length:data.bytes->size()]
                        forType:nsString(data.type)] != NO;
    }
    bool operator()(const PasteboardFiles& files) const {
        NSMutableArray<NSURL*>* urls = [NSMutableArray array];
        for (const std::string& path : files.paths) {
            [urls addObject:[NSURL fileURLWithPath:nsString(path)]];
        }
        [board() clearContents];
        return [board() writeObjects:urls] != NO;
    }
    bool operator()(const PasteboardPictureFile& file) const {
        NSPasteboardItem* item = [[NSPasteboardItem alloc] init];
        if (provider != nil) {
            [item setDataProvider:provider forTypes:@[ NSPasteboardTypePNG ]];
        } else if (const SharedBytes png = file.png ? file.png->bytes() : nullptr) {
            [item setData:[NSData dataWithBytes:png->data() length:png->size()] forType:NSPasteboardTypePNG];
        }
        if (NSString* address = [NSURL fileURLWithPath:nsString(file.path)].absoluteString) {
            [item setString:address forType:NSPasteboardTypeFileURL];
        }
        [board() clearContents];
        return [board() writeObjects:@[ item ]] != NO;
    }
};

} // namespace

MacPasteboard::MacPasteboard() = default;

MacPasteboard::~MacPasteboard() = default;

std::int64_t MacPasteboard::changeCount() const {
    return board().changeCount;
}

Handle MacPasteboard::onChange(std::function<void()> /*changed*/) {
    return {};
}

Handle MacPasteboard::offeredTypes(const std::vector<std::string>& types,
                                   std::function<void(std::vector<std::string>)> answer) {
    std::vector<std::string> offered;
    for (const std::string& type : types) {
        if (offers(type)) {
            offered.push_back(type);
        }
    }
    answer(std::move(offered));
    return {};
}

Handle MacPasteboard::readFiles(std::function<void(std::vector<std::string>)> answer) {
    std::vector<std::string> paths;
    for (NSURL* url in fileUrls()) {
        paths.push_back(utf8String(url.path));
    }
    answer(std::move(paths));
    return {};
}

Handle MacPasteboard::readString(std::size_t mostBytes, std::function<void(std::optional<std::string>)> answer) {
    NSString* text = [board() stringForType:NSPasteboardTypeString];
    // No character takes fewer bytes than it has UTF-16 units, so a longer one needn't be converted.
    if (text == nil || text.length > mostBytes) {
        answer(std::nullopt);
        return {};
    }
    std::string utf8 = wholeText(text);
    answer(utf8.size() <= mostBytes ? std::optional(std::move(utf8)) : std::nullopt);
    return {};
}

Handle MacPasteboard::readData(const std::string& type, std::size_t mostBytes,
                               std::function<void(SharedBytes)> answer) {
    NSData* data = [board() dataForType:nsString(type)];
    if (data == nil || data.length > mostBytes) {
        answer(nullptr);
        return {};
    }
    const auto* bytes = static_cast<const std::uint8_t*>(data.bytes);
    answer(std::make_shared<const Bytes>(bytes, bytes + data.length));
    return {};
}

bool MacPasteboard::write(PasteboardContents contents) {
    std::unique_ptr<Promise> promise;
    if (const auto* file = std::get_if<PasteboardPictureFile>(&contents); file && file->png && file->png->isPending()) {
        promise = std::make_unique<Promise>();
        promise->provider = [[RBPromisedPicture alloc] init];
        promise->provider->_promised = file->png;
    }
    const bool written = std::visit(Write{.provider = promise ? promise->provider : nil}, contents);
    promise_ = std::move(promise); // the one before is let go by now
    return written;
}

} // namespace rb
