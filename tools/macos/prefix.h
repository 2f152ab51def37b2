// The headers that most sources include, see rookmac/project.py.
#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>
#ifdef __OBJC__
#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>
#endif
#ifdef ROOKBAY_SUITE
#include <gtest/gtest.h>
#endif
