#include "desktops/macos/SavePanels.h"

#include "desktops/macos/Bridge.h"

#import <UniformTypeIdentifiers/UniformTypeIdentifiers.h>

#include <utility>

// Asks the product about each confirmed name.
@interface RBMacSavePanelDelegate : NSObject <NSOpenSavePanelDelegate>
- (instancetype)initWithValidation:(rb::SavePanels::Validate)validate;
@end

@implementation RBMacSavePanelDelegate {
    rb::SavePanels::Validate _validate;
}

- (instancetype)initWithValidation:(rb::SavePanels::Validate)validate {
    self = [super init];
    if (self != nil) {
        _validate = std::move(validate);
    }
    return self;
}

- (BOOL)panel:(id)sender validateURL:(NSURL*)url error:(NSError**)outError {
    const auto refusal = _validate ? _validate(rb::utf8String(url.path)) : std::nullopt;
    if (!refusal) {
        return YES;
    }
    if (outError != nullptr) {
        *outError = [NSError errorWithDomain:NSCocoaErrorDomain
                                        code:NSFileWriteFileExistsError
                                    userInfo:@{NSLocalizedDescriptionKey : rb::nsString(*refusal)}];
    }
    return NO;
}

@end

namespace rb {

namespace {

class MacSavePanel final : public SavePanel {
public:
    MacSavePanel(const SavePanelSpec& spec, SavePanels::Validate validate, SavePanels::Answer answer)
        : panel_([NSSavePanel savePanel])
        , delegate_([[RBMacSavePanelDelegate alloc] initWithValidation:std::move(validate)])
        , answer_(std::make_shared<SavePanels::Answer>(std::move(answer))) {
        panel_.title = nsString(spec.title);
        panel_.prompt = nsString(spec.prompt);
        if (UTType* type = [UTType typeWithFilenameExtension:nsString(spec.extension)]) {
            panel_.allowedContentTypes = @[ type ];
        }
        panel_.allowsOtherFileTypes = NO;
        panel_.canCreateDirectories = YES;
        panel_.extensionHidden = NO;
        panel_.delegate = delegate_;
        panel_.directoryURL = [NSURL fileURLWithPath:nsString(spec.directory) isDirectory:YES];
        panel_.nameFieldStringValue = nsString(spec.name);
        // Emptied by the destructor: an answer that is already on its way then finds nobody.
        const auto waiting = answer_;
        __weak NSSavePanel* weakPanel = panel_;
        [panel_ beginWithCompletionHandler:^(NSModalResponse response) {
            NSURL* url = response == NSModalResponseOK ? weakPanel.URL : nil;
            const auto path = url != nil ? std::optional(utf8String(url.path)) : std::nullopt;
            const auto tell = std::exchange(*waiting, nullptr); // which usually destroys this panel
            if (tell) {
                tell(path);
            }
        }];
    }
    ~MacSavePanel() override {
        panel_.delegate = nil;
        if (std::exchange(*answer_, nullptr)) {
            [panel_ cancel:nil];
        }
    }
    MacSavePanel(const MacSavePanel&) = delete;
    MacSavePanel& operator=(const MacSavePanel&) = delete;

    void makeKeyAndOrderFront() override { [panel_ makeKeyAndOrderFront:nil]; }

private:
    NSSavePanel* panel_;
    RBMacSavePanelDelegate* delegate_; // the panel refers to it weakly
    std::shared_ptr<SavePanels::Answer> answer_;
};

} // namespace

std::unique_ptr<SavePanel> MacSavePanels::begin(const SavePanelSpec& spec, Validate validate, Answer answer) {
    return std::make_unique<MacSavePanel>(spec, std::move(validate), std::move(answer));
}

} // namespace rb
