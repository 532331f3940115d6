// SPDX-License-Identifier: MIT

// What only a program beyond the library's edge can show: an exception that the library throws is recognised here, and
// the installed headers tell the version. What users write otherwise stands in the examples, which are built beside.

#include <platform/NSException.h>
#include <platform/ZTVersion.h>
#include <ztstyles/ZTSStylesheet.h>

#include <cstdio>

int main() {
  const zt::Ref<zt::ZTSStylesheet> sheet = zt::ZTSStylesheet::withHost();
  try {
    sheet->setParent(sheet);
  } catch (const zt::NSInvalidArgumentException& exception) {
    std::printf("ZTStyles %s: %s\n", zt::versionString(), exception.what());
    return 0;
  }
  return 1;
}
