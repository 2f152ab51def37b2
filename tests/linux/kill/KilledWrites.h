#pragma once

namespace rb {

// The functions by which a program changes files are wrapped in this test's program. From now on this process is killed
// right after the change of this number, counted from 1; a `torn` write is cut in half before. 0: never.
void killAfterChange(int number, bool torn);
// The write of this number, counted from 1, and all later ones find the disk full. 0: none.
void fillDiskBeforeWrite(int number);

} // namespace rb
