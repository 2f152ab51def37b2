"""Link stubs: one text-based library (.tbd) per framework and one for the Objective-C runtime."""

from .facts import LINKED_THROUGH

TARGETS = "[ x86_64-macos, arm64-macos ]"

# Symbols of variadic functions and of what the compiler itself calls, which the facts leave out.
ALSO_EXPORTED = {
    "CoreFoundation": """CFRetain CFRelease CFAutorelease CFStringCreateWithFormat CFStringAppendFormat CFShow
        __CFConstantStringClassReference __NSArray0__ __NSDictionary0__ __kCFBooleanTrue __kCFBooleanFalse""",
    "Foundation": "NSLog CFBridgingRelease CFBridgingRetain",
    "AppKit": "NSApp",
    "IOKit": "IOServiceGetMatchingService IOServiceGetMatchingServices IOServiceAddMatchingNotification",
}

RUNTIME = """objc_msgSend objc_msgSend_stret objc_msgSend_fpret objc_msgSend_fp2ret objc_msgSendSuper2
    objc_msgSendSuper2_stret objc_retain objc_release objc_autorelease objc_retainAutorelease objc_retainBlock
    objc_retainAutoreleaseReturnValue objc_autoreleaseReturnValue objc_retainAutoreleasedReturnValue
    objc_unsafeClaimAutoreleasedReturnValue objc_claimAutoreleasedReturnValue objc_storeStrong objc_storeWeak
    objc_loadWeak objc_loadWeakRetained objc_initWeak objc_destroyWeak objc_copyWeak objc_moveWeak objc_alloc
    objc_alloc_init objc_allocWithZone objc_opt_new objc_opt_self objc_opt_class objc_opt_isKindOfClass
    objc_opt_respondsToSelector objc_autoreleasePoolPush objc_autoreleasePoolPop objc_getProperty objc_setProperty
    objc_setProperty_atomic objc_setProperty_nonatomic objc_setProperty_atomic_copy objc_setProperty_nonatomic_copy
    objc_copyStruct objc_copyCppObjectAtomic objc_getAssociatedObject objc_setAssociatedObject
    objc_removeAssociatedObjects objc_enumerationMutation objc_exception_throw objc_exception_rethrow
    objc_begin_catch objc_end_catch objc_terminate objc_sync_enter objc_sync_exit objc_ehtype_vtable objc_getClass
    objc_getProtocol objc_lookUpClass object_getClass object_getClassName object_setClass object_getIvar
    object_setIvar class_getName class_addMethod class_replaceMethod class_getInstanceMethod class_getClassMethod
    class_getSuperclass class_respondsToSelector method_getImplementation method_setImplementation
    method_exchangeImplementations method_getTypeEncoding sel_registerName sel_getName objc_allocateClassPair
    objc_registerClassPair imp_implementationWithBlock _objc_empty_cache _objc_empty_vtable
    __objc_personality_v0""".split()
RUNTIME += [f"objc_{call}_x{register}" for call in ("retain", "release") for register in range(1, 29)]


def install_name(framework):
    version = "C" if framework in ("AppKit", "Foundation") else "A"
    return f"/System/Library/Frameworks/{framework}.framework/Versions/{version}/{framework}"


def library(path, installed_as, symbols, classes, exception_types):
    lines = ["--- !tapi-tbd", "tbd-version: 4", f"targets: {TARGETS}", f"install-name: '{installed_as}'"]
    lines += ["current-version: 1", "compatibility-version: 1", "exports:", f"  - targets: {TARGETS}"]
    sections = (("symbols", symbols), ("objc-classes", classes), ("objc-eh-types", exception_types))
    lines += [f"    {key}: [ {', '.join(sorted(names))} ]" for key, names in sections if names]
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text("\n".join(lines + ["...", ""]))


def write(facts, sdk):
    symbols = {}
    classes = {}
    for name, framework in facts.frameworks.items():
        target = LINKED_THROUGH.get(name, name)
        exported = [*framework["functions"], *framework["externs"], *ALSO_EXPORTED.get(name, "").split()]
        symbols.setdefault(target, set()).update("_" + symbol for symbol in exported)
        own = {cls for cls, entry in framework["classes"].items() if not entry.get("ext")}
        classes.setdefault(target, set()).update(own - {"NSObject"})
    for name in symbols:
        # Only Foundation's exceptions are ever thrown or caught.
        exceptions = classes[name] if name == "Foundation" else ()
        path = sdk / f"System/Library/Frameworks/{name}.framework/{name}.tbd"
        library(path, install_name(name), symbols[name], classes[name], exceptions)
    runtime = {"_" + symbol for symbol in RUNTIME} | {"_OBJC_EHTYPE_id"}
    library(sdk / "usr/lib/libobjc.tbd", "/usr/lib/libobjc.A.dylib", runtime, {"NSObject", "Protocol"}, {"NSObject"})
