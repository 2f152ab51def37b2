#include "desktops/macos/Files.h"

#include "desktops/macos/Bridge.h"

#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>

namespace rb {

FileFacts MacFiles::facts(const std::string& path) const {
    NSString* file = nsString(path);
    FileFacts facts;
    facts.isSymbolicLink = [NSFileManager.defaultManager destinationOfSymbolicLinkAtPath:file error:nil] != nil;
    facts.exists = [NSFileManager.defaultManager fileExistsAtPath:file] != NO;
    if (!facts.exists) {
        return facts;
    }
    NSURL* url = [NSURL fileURLWithPath:file];
    id directory = nil;
    [url getResourceValue:&directory forKey:NSURLIsDirectoryKey error:nil];
    facts.isDirectory = [directory isKindOfClass:NSNumber.class] && [directory boolValue];
    facts.isPackage = facts.isDirectory && [NSWorkspace.sharedWorkspace isFilePackageAtPath:file];
    id type = nil;
    [url getResourceValue:&type forKey:NSURLContentTypeKey error:nil];
    facts.isImage = [type isKindOfClass:UTType.class] && [type conformsToType:UTTypeImage];
    return facts;
}

std::string MacFiles::homeDirectory() const {
    return utf8String(NSHomeDirectory());
}

std::string MacFiles::desktopDirectory() const {
    NSArray<NSURL*>* found = [NSFileManager.defaultManager URLsForDirectory:NSDesktopDirectory
                                                                  inDomains:NSUserDomainMask];
    NSURL* desktop = found.firstObject;
    return desktop != nil ? utf8String(desktop.path) : homeDirectory() + "/Desktop";
}

std::optional<std::string> MacFiles::createEmptyFile(const std::string& path) {
    NSError* error = nil;
    const BOOL written = [[NSData data] writeToURL:[NSURL fileURLWithPath:nsString(path)]
                                           options:NSDataWritingWithoutOverwriting
                                             error:&error];
    return written ? std::nullopt : std::optional(utf8String(error.localizedDescription));
}

} // namespace rb
