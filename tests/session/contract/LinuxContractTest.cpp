#include "tests/contract/AllContracts.h"
#include "tests/session/contract/LinuxDesktopUnderTest.h"

namespace rb {

namespace {

const DesktopCase linuxDesktop{"Linux", [] { return std::make_unique<LinuxDesktopUnderTest>(); }};

} // namespace

ROOKBAY_INSTANTIATE_CONTRACTS(Desktop, linuxDesktop);

} // namespace rb
