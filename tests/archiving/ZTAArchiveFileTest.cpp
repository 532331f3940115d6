// SPDX-License-Identifier: MIT
#include <platform/NSNumber.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <tests/Files.h>
#include <tests/archiving/Things.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <random>

namespace zt::test {

namespace {

namespace fs = std::filesystem;

struct Folder {
  fs::path path;
  Folder() {
    std::string name = std::string(ZT_BINARY_DIR) + "/archive-XXXXXX";
    path = ::mkdtemp(name.data());
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { fs::remove_all(path); }
  [[nodiscard]] std::string file(const char* name) const { return (path / name).string(); }
  [[nodiscard]] std::ptrdiff_t count() const {
    return std::distance(fs::directory_iterator(path), fs::directory_iterator());
  }
};

void write(NSObject& root, const std::string& path, ZTACompression compression = ZTACompression::none) {
  auto archiver = make<ZTAXMLArchiver>(1);
  archiver->encodeRootObject(root);
  archiver->writeToFile(path, compression);
}

std::string labelIn(const std::string& path) {
  return asThing(ZTAXMLUnarchiver::unarchiverForFile(path)->unarchiveRootObject()).label;
}

}  // namespace

TEST(ZTAArchiveFileTest, SavingReplacesTheFileAndKeepsLinksAndPermissions) {
  const Folder folder;
  const std::string path = folder.file("a.zts");
  const mode_t mask = ::umask(027);
  write(*box("one"), path);
  ::umask(mask);
  EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
  ASSERT_EQ(::chmod(path.c_str(), 0604), 0);
  fs::create_symlink("a.zts", folder.file("link"));
  write(*box("two"), folder.file("link"), ZTACompression::gzip);
  EXPECT_EQ(labelIn(path), "two");
  EXPECT_TRUE(fs::is_symlink(folder.file("link")));
  EXPECT_EQ(fs::status(path).permissions(), fs::perms(0604));
  EXPECT_NE(errorOf([&] { write(*box("x"), folder.path.string()); }), "");
  EXPECT_NE(errorOf([&] { write(*box("x"), folder.file("no/such")); }), "");
  EXPECT_NE(errorOf([&] { write(*box("x", {thing("\x01")}), path); }), "");
  EXPECT_EQ(labelIn(path), "two");
  EXPECT_EQ(folder.count(), 2);

  // Only regular files are read.
  ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
  std::ofstream(folder.file("long")) << std::string(1000, 'x');
  for (const char* name : {"pipe", "missing", "long", "."}) {
    EXPECT_NE(errorOf([&] { (void)ztaReadFile(folder.file(name), 999); }), "") << name;
  }
  EXPECT_EQ(ztaReadFile(folder.file("long"), 1000).size(), 1000u);
}

TEST(ZTAArchiveFileTest, AKilledSaveLeavesTheOldFileOrTheNewOneWhole) {
  const Folder folder;
  const std::string path = folder.file("a.zts");
  std::vector<Ref<NSObject>> numbers;
  for (int index = 0; index < 5000; ++index) numbers.push_back(NSNumber::withInteger(index));
  auto one = box("one", numbers);
  auto two = box("two", numbers);
  write(*one, path);
  bool isOne = true;
  std::mt19937 random(1);  // the moments are the machine's, the lengths repeat
  const int rounds = kIsSanitized ? 30 : 300;
  int saved = 0;
  int killed = 0;
  for (int round = 0; round < rounds; ++round) {
    if (!isOne) write(*one, path);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      write(*two, path, round % 2 != 0 ? ZTACompression::gzip : ZTACompression::none);
      ::_exit(0);
    }
    ::usleep(random() % 8000);
    ::kill(child, SIGKILL);
    int state = 0;
    ASSERT_EQ(::waitpid(child, &state, 0), child);
    killed += WIFSIGNALED(state) ? 1 : 0;
    auto unarchiver = ZTAXMLUnarchiver::unarchiverForFile(path);
    Ref<NSObject> root = unarchiver->unarchiveRootObject();
    ASSERT_EQ(asThing(root).links.size(), numbers.size());
    ASSERT_EQ(unarchiver->findingCount(), 0u);
    isOne = asThing(root).label == "one";
    saved += isOne ? 0 : 1;
  }
  // Otherwise the moments missed what they should hit.
  EXPECT_GT(killed, 0);
  EXPECT_LT(saved, rounds);
  RecordProperty("killed", killed);
  RecordProperty("saved", saved);
}

}  // namespace zt::test
