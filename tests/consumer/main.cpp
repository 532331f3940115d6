// What a user of the installed library writes first. It is compiled against the installed headers only.

#include <cstdio>

#include <platform/ZTVersion.h>

int main() {
  std::printf("ZTStyles %s\n", zt::versionString());
  return 0;
}
