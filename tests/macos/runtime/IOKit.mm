// I/O Kit's notifications of devices: registered, and nothing ever comes or goes.
#include "tests/macos/runtime/Recorder.h"

#import <IOKit/IOKitLib.h>

kern_return_t IOServiceAddMatchingNotification(IONotificationPortRef, const io_name_t, CFDictionaryRef matching,
                                               IOServiceMatchingCallback, void*, io_iterator_t* iterator) {
    rb::fake::recordFunction("IOServiceAddMatchingNotification", {});
    if (matching != nullptr) {
        CFRelease(matching); // the call consumes it
    }
    *iterator = 0;
    return KERN_SUCCESS;
}
