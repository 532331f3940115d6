#include <cstdio>
#include <cstring>

#include <platform/ZTVersion.h>

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
    std::printf("ztstyles %s\n", zt::versionString());
    return 0;
  }
  std::fputs("usage: ztstyles --version\n", stderr);
  return 2;
}
