// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <tests/Files.h>
#include <tests/archiving/Things.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

namespace zt::test {

namespace {

namespace fs = std::filesystem;

class ZTAAtomicFileTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string name = std::string(ZT_BINARY_DIR) + "/atomic-XXXXXX";
    mFolder = ::mkdtemp(name.data());
  }
  void TearDown() override { fs::remove_all(mFolder); }

  [[nodiscard]] std::string file(const std::string& name) const { return (mFolder / name).string(); }
  std::string filled(const std::string& name) const {
    std::ofstream(file(name)) << "old";
    return file(name);
  }
  [[nodiscard]] std::ptrdiff_t count() const {
    return std::distance(fs::directory_iterator(mFolder), fs::directory_iterator());
  }

  fs::path mFolder;
};

void save(const std::string& path, const std::string& text) {
  ZTAAtomicFile atomic(path);
  atomic.write(text);
  atomic.commit();
}

TEST_F(ZTAAtomicFileTest, KeepsWhatBelongsToTheNameAndNotToTheBytes) {
  const std::string path = filled("a");
  ASSERT_EQ(::chmod(path.c_str(), 04751), 0);
  const bool hasAttributes = ::setxattr(path.c_str(), "user.colour", "blue", 4, 0) == 0;
  const bool hasOwner = ::chown(path.c_str(), 65534, 65534) == 0 && ::chmod(path.c_str(), 04751) == 0;
  fs::create_symlink("a", file("link"));
  fs::create_symlink("link", file("chain"));
  save(file("chain"), "new");
  EXPECT_EQ(contentOf(path), "new");
  EXPECT_TRUE(fs::is_symlink(file("chain")));
  struct stat facts = {};
  ASSERT_EQ(::stat(path.c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 07777, 04751u);
  EXPECT_EQ(facts.st_uid, hasOwner ? 65534u : ::getuid());
  char value[8] = {};
  EXPECT_EQ(::getxattr(path.c_str(), "user.colour", value, sizeof value), hasAttributes ? 4 : -1);

  // A link to nowhere makes its target, also in another folder.
  fs::create_directory(file("deep"));
  fs::create_symlink("deep/b", file("nowhere"));
  save(file("nowhere"), "made");
  EXPECT_EQ(contentOf(file("deep/b")), "made");
  EXPECT_TRUE(fs::is_symlink(file("nowhere")));
}

TEST_F(ZTAAtomicFileTest, RefusesWhatItCouldNotKeep) {
  const std::string twice = filled("twice");
  fs::create_hard_link(twice, file("second"));
  EXPECT_THAT(errorOf([&] { save(twice, "new"); }), testing::HasSubstr("2 names"));
  const std::string fixed = filled("fixed");
  ASSERT_EQ(::chmod(fixed.c_str(), 0444), 0);
  EXPECT_THAT(errorOf([&] { save(fixed, "new"); }), testing::HasSubstr("read-only"));
  fs::create_symlink("round", file("round"));
  EXPECT_NE(errorOf([&] { save(file("round"), "new"); }), "");
  EXPECT_EQ(contentOf(twice), "old");
  EXPECT_EQ(contentOf(fixed), "old");
  EXPECT_EQ(count(), 4);
}

TEST_F(ZTAAtomicFileTest, LeavesNothingBehindAndTidiesUpAfterTheDead) {
  const std::string path = filled("a");
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ZTAAtomicFile atomic(path);
    atomic.write("half");
    ::kill(::getpid(), SIGTERM);
    ::_exit(0);
  }
  int state = 0;
  ASSERT_EQ(::waitpid(child, &state, 0), child);
  EXPECT_EQ(contentOf(path), "old");
  EXPECT_EQ(count(), 1) << "a signal during the save left something";
  filled(".ztstyles-" + std::to_string(child) + "-1");  // of a process that is dead now
  filled(".ztstyles-" + std::to_string(::getppid()) + "-1");
  filled(".ztstyles-notes");
  save(path, "new");
  EXPECT_EQ(count(), 3);
  EXPECT_EQ(contentOf(path), "new");
}

}  // namespace

}  // namespace zt::test
