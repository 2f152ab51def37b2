#include "desktops/macos/Thumbnails.h"

#include "desktops/macos/Bitmap.h"
#include "desktops/macos/Bridge.h"

#import <ImageIO/ImageIO.h>
#import <QuickLookThumbnailing/QuickLookThumbnailing.h>

#include <algorithm>
#include <utility>

namespace rb {

std::shared_ptr<const Bitmap> MacThumbnails::imageThumb(const std::string& path, int maxPixelSize) {
    NSURL* url = [NSURL fileURLWithPath:nsString(path)];
    CGImageSourceRef source = CGImageSourceCreateWithURL((__bridge CFURLRef)url, nullptr);
    if (source == nullptr) {
        return nullptr;
    }
    NSDictionary* options = @{
        (__bridge id)kCGImageSourceCreateThumbnailFromImageAlways : @YES,
        (__bridge id)kCGImageSourceCreateThumbnailWithTransform : @YES,
        (__bridge id)kCGImageSourceThumbnailMaxPixelSize : @(maxPixelSize)
    };
    CGImageRef image = CGImageSourceCreateThumbnailAtIndex(source, 0, (__bridge CFDictionaryRef)options);
    CFRelease(source);
    if (image == nullptr) {
        return nullptr;
    }
    auto bitmap = std::make_shared<const MacBitmap>(image);
    CGImageRelease(image);
    return bitmap;
}

Image MacThumbnails::iconForFile(const std::string& path) {
    NSImage* icon = [NSWorkspace.sharedWorkspace iconForFile:nsString(path)];
    // Large enough for a card on the sharpest screen.
    NSRect rect = NSMakeRect(0, 0, 128, 128);
    CGImageRef image = [icon CGImageForProposedRect:&rect context:nil hints:nil];
    if (image == nullptr) {
        return {};
    }
    return std::make_shared<const MacBitmap>(image);
}

Image MacThumbnails::iconForFile(const std::string& path, double side) {
    // A copy, because the workspace may hand the same one to others.
    NSImage* icon = [[NSWorkspace.sharedWorkspace iconForFile:nsString(path)] copy];
    if (icon == nil) {
        return {};
    }
    icon.size = NSMakeSize(side, side);
    return std::make_shared<const MacPicture>(icon);
}

bool MacThumbnails::canDecode(const std::string& path) {
    NSURL* url = [NSURL fileURLWithPath:nsString(path)];
    CGImageSourceRef source = CGImageSourceCreateWithURL((__bridge CFURLRef)url, nullptr);
    if (source == nullptr) {
        return false;
    }
    const bool picture = CGImageSourceGetType(source) != nullptr && CGImageSourceGetCount(source) > 0;
    CFRelease(source);
    return picture;
}

SharedBytes MacThumbnails::pngData(const SharedBytes& data, const std::atomic<bool>& givenUp) {
    NSData* png = nil;
    // The steps can't be given up in themselves, and what they leave behind is large.
    @autoreleasepool {
        NSImage* picture = [[NSImage alloc] initWithData:[NSData dataWithBytes:data->data() length:data->size()]];
        NSData* tiff = givenUp ? nil : picture.TIFFRepresentation;
        NSBitmapImageRep* bitmap = tiff != nil && !givenUp ? [NSBitmapImageRep imageRepWithData:tiff] : nil;
        png = givenUp ? nil : [bitmap representationUsingType:NSBitmapImageFileTypePNG properties:@{}];
    }
    if (png == nil) {
        return nullptr;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(png.bytes);
    return std::make_shared<const Bytes>(bytes, bytes + png.length);
}

DecodedPicture MacThumbnails::squareThumb(const SharedBytes& data, double side, double cornerRadius) {
    NSImage* picture = [[NSImage alloc] initWithData:[NSData dataWithBytes:data->data() length:data->size()]];
    if (picture == nil) {
        return {};
    }
    NSImageRep* first = picture.representations.firstObject;
    DecodedPicture decoded{.pixelSize = {static_cast<double>(first.pixelsWide), static_cast<double>(first.pixelsHigh)}};
    const NSSize size = picture.size;
    if (size.width > 0 && size.height > 0) {
        NSImage* square = [NSImage
             imageWithSize:NSMakeSize(side, side)
                   flipped:NO
            drawingHandler:^BOOL(NSRect rect) {
                const double scale = std::max(side / size.width, side / size.height);
                const NSRect filled =
                    NSMakeRect(NSMidX(rect) - size.width * scale / 2, NSMidY(rect) - size.height * scale / 2,
                               size.width * scale, size.height * scale);
                [[NSBezierPath bezierPathWithRoundedRect:rect xRadius:cornerRadius yRadius:cornerRadius] addClip];
                [picture drawInRect:filled fromRect:NSZeroRect operation:NSCompositingOperationSourceOver fraction:1];
                return YES;
            }];
        decoded.thumbnail = std::make_shared<const MacPicture>(square);
    }
    return decoded;
}

Handle MacThumbnails::requestDocumentThumbnail(const std::string& path, Size size, double scale,
                                               std::function<void(std::shared_ptr<const Bitmap>)> answer) {
    QLThumbnailGenerationRequest* request = [[QLThumbnailGenerationRequest alloc]
          initWithFileAtURL:[NSURL fileURLWithPath:nsString(path)]
                       size:cgSize(size)
                      scale:scale
        representationTypes:QLThumbnailGenerationRequestRepresentationTypeThumbnail];
    // Emptied by the handle: an answer that is already on its way to the main thread then finds nobody.
    const auto waiting = std::make_shared<std::function<void(std::shared_ptr<const Bitmap>)>>(std::move(answer));
    [QLThumbnailGenerator.sharedGenerator
        generateBestRepresentationForRequest:request
                           completionHandler:^(QLThumbnailRepresentation* representation, NSError*) {
                               if (representation == nil ||
                                   representation.type != QLThumbnailRepresentationTypeThumbnail ||
                                   representation.CGImage == nullptr) {
                                   return;
                               }
                               const auto bitmap = std::make_shared<const MacBitmap>(representation.CGImage);
                               dispatch_async(dispatch_get_main_queue(), ^{
                                   const auto tell = *waiting; // it may drop the handle
                                   if (tell) {
                                       tell(bitmap);
                                   }
                               });
                           }];
    return Handle([request, waiting] {
        *waiting = nullptr;
        [QLThumbnailGenerator.sharedGenerator cancelRequest:request];
    });
}

} // namespace rb
