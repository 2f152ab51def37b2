#pragma once

namespace rb {

// The functions by which a program changes files are wrapped in this test's program. From now on this process is killed
// right after the change of this number, counted from 1; a `torn` write is cut in half before. 0: never.
void killAfterChange(int number, bool torn);

} // namespace rb
