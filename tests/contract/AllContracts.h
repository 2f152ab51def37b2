#pragma once

// The suites that every desktop passes. A desktop's test includes this once and instantiates all of them:
//     ROOKBAY_INSTANTIATE_CONTRACTS(Virtual, (DesktopCase{"Virtual", createVirtualDesktop}))
// and DisplaysContract on a desktop whose display has several modes.

#include "tests/contract/AlertsContract.h"
#include "tests/contract/ChildProcessesContract.h"
#include "tests/contract/DisplaysContract.h"
#include "tests/contract/FactsContract.h"
#include "tests/contract/HotKeysContract.h"
#include "tests/contract/PanelsContract.h"
#include "tests/contract/PasteboardContract.h"
#include "tests/contract/RunLoopContract.h"
#include "tests/contract/StatusItemsContract.h"
#include "tests/contract/UserDefaultsContract.h"
#include "tests/contract/WindowsContract.h"

#define ROOKBAY_INSTANTIATE_CONTRACT(prefix, suite, desktopCase)                                                       \
    INSTANTIATE_TEST_SUITE_P(prefix, suite, testing::Values(desktopCase),                                              \
                             [](const auto& tested) { return tested.param.name; })

#define ROOKBAY_INSTANTIATE_CONTRACTS(prefix, desktopCase)                                                             \
    ROOKBAY_INSTANTIATE_CONTRACT(prefix, AlertsContract, desktopCase);                                                 \
    ROOKBAY_INSTANTIATE_CONTRACT(prefix, ChildProcessesContract, desktopCase);                                         \
    ROOKBAY_INSTANTIATE_CONTRACT(prefix, FactsContract, desktopCase);                                                  \
    ROOKBAY_INSTANTIATE_CONTRACT(prefix, HotKeysContract, desktopCase);                                                \
    ROOKBAY_INSTANTIATE_CONTRACT(prefix, PanelsContract, desktopCase);                                                 \
    ROOKBAY_INSTANTIATE_CONTRACT(prefix, PasteboardContract, desktopCase);                                             \
    ROOKBAY_INSTANTIATE_CONTRACT(prefix, RunLoopContract, desktopCase);                                                \
    ROOKBAY_INSTANTIATE_CONTRACT(prefix, StatusItemsContract, desktopCase);                                            \
    ROOKBAY_INSTANTIATE_CONTRACT(prefix, UserDefaultsContract, desktopCase);                                           \
    ROOKBAY_INSTANTIATE_CONTRACT(prefix, WindowsContract, desktopCase)
