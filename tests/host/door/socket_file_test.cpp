#include "host/door/socket_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

#include "live_door.h"

namespace motion::host::door {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A socket that is bound and does not listen: nobody is there, or nobody any more.
void leaveDeadSocket(const fs::path& path) {
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.string().copy(address.sun_path, sizeof(address.sun_path) - 1);
  ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  close(descriptor);
}

class SocketFileTest : public testing::Test {
 protected:
  fs::path path() const { return m_scratch / "test.sock"; }

  std::string refusalOf(const fs::path& at) {
    SocketFile sut;
    std::string problem;
    EXPECT_FALSE(sut.open(at, problem));
    EXPECT_NE(problem, "");
    return problem;
  }

  ScratchDir m_scratch;
  std::string m_problem;
};

TEST_F(SocketFileTest, BelongsToItsOwnerAlone) {
  const mode_t old = umask(0);
  SocketFile sut;
  EXPECT_TRUE(sut.open(path(), m_problem)) << m_problem;
  umask(old);
  struct stat status {};
  ASSERT_EQ(lstat(path().c_str(), &status), 0);
  EXPECT_TRUE(S_ISSOCK(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_EQ(status.st_uid, geteuid());
  EXPECT_TRUE(isAlive(path()));
}

TEST_F(SocketFileTest, AStrangeUmaskDoesNotLockTheOwnerOut) {
  const mode_t old = umask(0777);
  SocketFile sut;
  EXPECT_TRUE(sut.open(path(), m_problem)) << m_problem;
  umask(old);
  struct stat status {};
  ASSERT_EQ(lstat(path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(SocketFileTest, IsGoneWhenItIsClosed) {
  {
    SocketFile sut;
    ASSERT_TRUE(sut.open(path(), m_problem)) << m_problem;
  }
  EXPECT_FALSE(fs::exists(path()));
}

TEST_F(SocketFileTest, ReplacesADeadSocket) {
  leaveDeadSocket(path());
  EXPECT_FALSE(isAlive(path()));
  SocketFile sut;
  EXPECT_TRUE(sut.open(path(), m_problem)) << m_problem;
  EXPECT_TRUE(isAlive(path()));
}

TEST_F(SocketFileTest, DoesNotDisturbALivingOne) {
  SocketFile other;
  ASSERT_TRUE(other.open(path(), m_problem)) << m_problem;
  EXPECT_THAT(refusalOf(path()), HasSubstr("another run listens at " + path().string()));
  EXPECT_TRUE(isAlive(path()));
}

TEST_F(SocketFileTest, NeverRemovesWhatIsNoSocket) {
  std::ofstream(path()) << "important";
  EXPECT_THAT(refusalOf(path()), HasSubstr("is no socket; it stays as it is"));
  EXPECT_TRUE(fs::is_regular_file(path()));
  fs::remove(path());
  fs::create_symlink(m_scratch / "elsewhere", path());
  refusalOf(path());
  EXPECT_TRUE(fs::is_symlink(path()));
  EXPECT_THAT(refusalOf(m_scratch.path()), HasSubstr("is no socket"));
}

TEST_F(SocketFileTest, LeavesWhatSomebodyElseHasPutInItsPlace) {
  SocketFile sut;
  ASSERT_TRUE(sut.open(path(), m_problem)) << m_problem;
  fs::remove(path());
  leaveDeadSocket(path());
  sut.close();
  EXPECT_TRUE(fs::exists(path()));
}

TEST_F(SocketFileTest, RefusesPathsThatCannotBe) {
  EXPECT_THAT(refusalOf(m_scratch / std::string(120, 'x')), HasSubstr("possible are 1 to 107"));
  EXPECT_THAT(refusalOf(""), HasSubstr("it has 0 bytes"));
  EXPECT_THAT(refusalOf(m_scratch / "missing" / "x.sock"), HasSubstr("No such file or directory"));
  const std::string longest = (m_scratch / std::string(107 - m_scratch.path().native().size() - 1, 'x')).string();
  SocketFile sut;
  EXPECT_TRUE(sut.open(longest, m_problem)) << m_problem;
  EXPECT_TRUE(isAlive(longest));
}

class DefaultDirectoryTest : public SocketFileTest {
 protected:
  DefaultDirectoryTest() {
    const char* const before = std::getenv("XDG_RUNTIME_DIR");
    m_before = before != nullptr ? std::optional<std::string>(before) : std::nullopt;
  }
  ~DefaultDirectoryTest() override {
    if (m_before) {
      setenv("XDG_RUNTIME_DIR", m_before->c_str(), 1);
    } else {
      unsetenv("XDG_RUNTIME_DIR");
    }
  }

  std::optional<std::string> m_before;
};

TEST_F(DefaultDirectoryTest, IsThatOfTheSessionOrOneInTmp) {
  setenv("XDG_RUNTIME_DIR", "/run/user/7", 1);
  EXPECT_EQ(defaultDirectory(), "/run/user/7/kavo");
  for (const char* const useless : {"", "relative"}) {
    setenv("XDG_RUNTIME_DIR", useless, 1);
    EXPECT_EQ(defaultDirectory(), "/tmp/kavo-" + std::to_string(geteuid()));
  }
  unsetenv("XDG_RUNTIME_DIR");
  EXPECT_EQ(defaultDirectory(), "/tmp/kavo-" + std::to_string(geteuid()));
}

TEST_F(SocketFileTest, ADirectoryIsMadeForItsOwnerAlone) {
  const mode_t old = umask(0);
  EXPECT_TRUE(prepareDirectory(m_scratch / "new", m_problem)) << m_problem;
  umask(old);
  struct stat status {};
  ASSERT_EQ(lstat((m_scratch / "new").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0700U);
  EXPECT_TRUE(prepareDirectory(m_scratch / "new", m_problem)) << "again";
}

TEST_F(SocketFileTest, ADirectoryThatOthersCanChangeIsRefused) {
  fs::create_directory(m_scratch / "open");
  for (const mode_t mode : {0770U, 0702U}) {
    ASSERT_EQ(chmod((m_scratch / "open").c_str(), mode), 0);
    EXPECT_FALSE(prepareDirectory(m_scratch / "open", m_problem));
    EXPECT_THAT(m_problem, HasSubstr("others may write"));
  }
  std::ofstream(m_scratch / "file") << "x";
  fs::create_directory_symlink(m_scratch.path(), m_scratch / "link");
  for (const char* const name : {"file", "link"}) {
    EXPECT_FALSE(prepareDirectory(m_scratch / name, m_problem));
    EXPECT_THAT(m_problem, HasSubstr("is no directory"));
  }
  EXPECT_FALSE(prepareDirectory(m_scratch / "missing" / "deep", m_problem));
  EXPECT_THAT(m_problem, HasSubstr("cannot be made"));
}

TEST_F(SocketFileTest, ADirectoryOfAnotherUserIsRefused) {
  const fs::path foreign = geteuid() == 0 ? m_scratch / "foreign" : fs::path("/usr");
  if (geteuid() == 0) {
    fs::create_directory(foreign);
    ASSERT_EQ(chmod(foreign.c_str(), 0700), 0);
    ASSERT_EQ(chown(foreign.c_str(), 12345, 12345), 0);
  }
  EXPECT_FALSE(prepareDirectory(foreign, m_problem));
  EXPECT_THAT(m_problem, HasSubstr("belongs to another user"));
}

TEST_F(SocketFileTest, SweepingTakesDeadSocketsOnly) {
  SocketFile living;
  ASSERT_TRUE(living.open(m_scratch / "b.sock", m_problem)) << m_problem;
  leaveDeadSocket(m_scratch / "a.sock");
  std::ofstream(m_scratch / "c.sock") << "a file";
  EXPECT_THAT(livingSockets(m_scratch.path()), ElementsAre(m_scratch / "b.sock"));
  sweep(m_scratch.path());
  EXPECT_FALSE(fs::exists(m_scratch / "a.sock"));
  EXPECT_TRUE(isAlive(m_scratch / "b.sock"));
  EXPECT_TRUE(fs::exists(m_scratch / "c.sock"));
  sweep(m_scratch / "missing");
  EXPECT_THAT(livingSockets(m_scratch / "missing"), IsEmpty());
}

}  // namespace
}  // namespace motion::host::door
