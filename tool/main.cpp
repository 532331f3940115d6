// SPDX-License-Identifier: MIT
#include <tool/Tool.h>

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

int main(int argc, char** argv) {
  try {
    return zt::runTool(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc), zt::processConsole());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "ztstyles: %s\n", error.what());
  } catch (...) {
    std::fputs("ztstyles: unknown failure\n", stderr);
  }
  return 3;
}
