#include "tests/contract/AllContracts.h"
#include "tests/session/contract/LinuxDesktopUnderTest.h"

namespace rb {

namespace {

const DesktopCase linuxDesktop{"Linux", [] { return std::make_unique<LinuxDesktopUnderTest>(); }};
const DesktopCase linuxOutputs{
    "LinuxOutputs", [] { return std::make_unique<LinuxDesktopUnderTest>(SessionOptions{.dummyOutputs = true}); }};

} // namespace

ROOKBAY_INSTANTIATE_CONTRACTS(Desktop, linuxDesktop);
ROOKBAY_INSTANTIATE_CONTRACT(Desktop, DisplaysContract, linuxOutputs);

} // namespace rb
