// Registration of commands and options with their schemas.
#include "host/motion/cmd_factory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include "host/motion/obj_factory.h"
#include "tests/host/motion/scripted_cmd.h"

namespace motion::host {
namespace {

using core::ObjectType;
using core::cmd::CmdId;
using core::cmd::CmdResult;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string SCHEMA = KAVO_TEST_SCHEMA_DIR "/cmdSetSignal.bfbs";
const std::string MISSING = KAVO_TEST_SCHEMA_DIR "/missing.bfbs";

/// A file that goes away with its owner.
class ScratchFile {
 public:
  explicit ScratchFile(const std::string& content)
      : m_path(std::filesystem::temp_directory_path() / ("schema-" + std::to_string(::getpid()) + ".bfbs")) {
    std::ofstream(m_path, std::ios::binary) << content;
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { std::filesystem::remove(m_path); }
  [[nodiscard]] std::string path() const { return m_path.string(); }

 private:
  std::filesystem::path m_path;
};

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

struct GenericCmdFactoryTest : testing::Test {
  CmdResult add(const CmdId& id, const std::string& schemaPath = SCHEMA, CmdResult created = CmdResult::Okay) {
    if (id.objectType == ObjectType::KINEMATICS) {
      return add<ObjectType::KINEMATICS>(id, schemaPath, created);
    }
    return add<ObjectType::AXIS>(id, schemaPath, created);
  }
  template <ObjectType TYPE>
  CmdResult add(const CmdId& id, const std::string& schemaPath, CmdResult created) {
    const core::cmd::CmdCreateFn<TYPE> create = [this, created](core::IObjFactory& factory, bool,
                                                                core::cmd::CmdGeneric<TYPE>*& cmd, std::string&) {
      cmd = new test::ScriptedCmd<TYPE>(script, factory);
      madeLast = cmd;
      return created;
    };
    const core::cmd::CmdMarshalFn marshal = [](const comm::datalayer::Variant*, core::IContainer*&, bool&) {
      return CmdResult::NoOptionData;
    };
    return sut.registerCmd(id, create, marshal, false, {"group 1", "group 2"}, schemaPath, "What it does", "");
  }

  test::Script script;
  ObjFactory objFactory;
  core::cmd::ICmdGeneric* madeLast = nullptr;
  Complaints complaints;
  GenericCmdFactory sut{complaints};
};

TEST_F(GenericCmdFactoryTest, keepsWhatWasRegistered) {
  EXPECT_EQ(add({ObjectType::AXIS, "Move"}), CmdResult::Okay);
  const auto entry = sut.find({ObjectType::AXIS, "Move"});
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->id, (CmdId{ObjectType::AXIS, "Move"}));
  EXPECT_FALSE(entry->visible);
  EXPECT_FALSE(entry->builtIn);
  EXPECT_THAT(entry->groups, ElementsAre("group 1", "group 2"));
  EXPECT_EQ(entry->description, "What it does");
  EXPECT_EQ(std::string(entry->schema.begin(), entry->schema.end()), contentOf(SCHEMA));
  EXPECT_FALSE(entry->schema.empty());
  core::IContainer* container = nullptr;
  bool owned = false;
  EXPECT_EQ(entry->marshal(nullptr, container, owned), CmdResult::NoOptionData);
  EXPECT_THAT(complaints.all(), IsEmpty());
}

TEST_F(GenericCmdFactoryTest, takesOverACommandThatWasMade) {
  for (const ObjectType type : {ObjectType::AXIS, ObjectType::KINEMATICS}) {
    ASSERT_EQ(add({type, "Move"}), CmdResult::Okay);
    std::unique_ptr<core::cmd::ICmdGeneric> cmd;
    std::string errText;
    EXPECT_EQ(sut.find({type, "Move"})->create(objFactory, true, cmd, errText), CmdResult::Okay);
    EXPECT_EQ(cmd.get(), madeLast);
  }
}

TEST_F(GenericCmdFactoryTest, leavesACommandWithItsMakerWhenMakingFailed) {
  ASSERT_EQ(add({ObjectType::AXIS, "Move"}, SCHEMA, CmdResult::OptionCreationFailed), CmdResult::Okay);
  std::unique_ptr<core::cmd::ICmdGeneric> cmd;
  std::string errText;
  EXPECT_EQ(sut.find({ObjectType::AXIS, "Move"})->create(objFactory, true, cmd, errText), CmdResult::OptionCreationFailed);
  EXPECT_EQ(cmd, nullptr);
  delete madeLast;
}

TEST_F(GenericCmdFactoryTest, tellsTypesOfObjectsApart) {
  EXPECT_EQ(add({ObjectType::AXIS, "Move"}), CmdResult::Okay);
  EXPECT_EQ(sut.find({ObjectType::KINEMATICS, "Move"}), nullptr);
  EXPECT_EQ(add({ObjectType::KINEMATICS, "Move"}), CmdResult::Okay);
  EXPECT_NE(sut.find({ObjectType::KINEMATICS, "Move"}), nullptr);
}

TEST_F(GenericCmdFactoryTest, refusesADuplicateAndNamesIt) {
  ASSERT_EQ(add({ObjectType::AXIS, "Move"}), CmdResult::Okay);
  EXPECT_EQ(add({ObjectType::AXIS, "Move"}), CmdResult::AlreadyRegistered);
  EXPECT_EQ(sut.all().size(), 1U);
  EXPECT_THAT(complaints.all(), ElementsAre(AllOf(HasSubstr("'Move'"), HasSubstr("registered already"))));
}

TEST_F(GenericCmdFactoryTest, refusesAMissingSchemaAndNamesFileAndRemedy) {
  EXPECT_EQ(add({ObjectType::AXIS, "Move"}, MISSING), CmdResult::SchemaNotReadable);
  EXPECT_EQ(sut.find({ObjectType::AXIS, "Move"}), nullptr);
  EXPECT_THAT(complaints.all(), ElementsAre(AllOf(HasSubstr("'" + MISSING + "'"), HasSubstr("cannot be read"),
                                                  HasSubstr("install it again"))));
}

TEST_F(GenericCmdFactoryTest, refusesADamagedSchemaAndNamesFileAndRemedy) {
  const std::string whole = contentOf(SCHEMA);
  const std::string halved = whole.substr(0, whole.size() / 2);
  std::string stranger = whole;
  stranger.replace(4, 4, "XXXX");
  for (const std::string& content : {std::string(), std::string("no schema at all"), halved, stranger}) {
    const ScratchFile file(content);
    EXPECT_EQ(add({ObjectType::AXIS, "Move"}, file.path()), CmdResult::SchemaNotReadable) << content.size();
    EXPECT_EQ(sut.find({ObjectType::AXIS, "Move"}), nullptr);
    EXPECT_THAT(complaints.all().back(),
                AllOf(HasSubstr("'" + file.path() + "'"), HasSubstr("not a binary FlatBuffers schema"), HasSubstr("again")));
  }
  EXPECT_EQ(complaints.all().size(), 4U);
}

TEST_F(GenericCmdFactoryTest, forgetsACommandWhileItsUsersKeepIt) {
  ASSERT_EQ(add({ObjectType::AXIS, "Move"}), CmdResult::Okay);
  const auto held = sut.find({ObjectType::AXIS, "Move"});
  EXPECT_EQ(sut.unregisterCmd({ObjectType::AXIS, "Move"}), CmdResult::Okay);
  EXPECT_EQ(sut.find({ObjectType::AXIS, "Move"}), nullptr);
  EXPECT_EQ(held->description, "What it does");
  EXPECT_EQ(sut.unregisterCmd({ObjectType::AXIS, "Move"}), CmdResult::NotRegistered);
  EXPECT_EQ(add({ObjectType::AXIS, "Move"}), CmdResult::Okay) << "the name is free again";
}

TEST_F(GenericCmdFactoryTest, listsEntriesByTypeAndName) {
  ASSERT_EQ(add({ObjectType::KINEMATICS, "A"}), CmdResult::Okay);
  ASSERT_EQ(add({ObjectType::AXIS, "C"}), CmdResult::Okay);
  ASSERT_EQ(add({ObjectType::AXIS, "B"}), CmdResult::Okay);
  std::vector<std::string> names;
  for (const auto& entry : sut.all()) {
    names.push_back(entry->id.name);
  }
  EXPECT_THAT(names, ElementsAre("B", "C", "A"));
}

TEST_F(GenericCmdFactoryTest, marksCommandsOfTheHost) {
  CmdEntry entry;
  entry.id = {ObjectType::AXIS, "Own"};
  EXPECT_TRUE(sut.addBuiltIn(entry));
  EXPECT_FALSE(sut.addBuiltIn(entry));
  EXPECT_TRUE(sut.find({ObjectType::AXIS, "Own"})->builtIn);
}

struct GenericCmdOptionFactoryTest : testing::Test {
  CmdResult add(const CmdId& id, const std::string& schemaPath = SCHEMA) {
    return sut.registerCmdOption(id, create, marshal, {"group"}, schemaPath, "What it adds", "");
  }

  core::cmd::CmdOptionCreateFn create = [](core::cmd::GenericCmdOption*&, std::string&) { return CmdResult::NullPointer; };
  core::cmd::CmdOptionMarshalFn marshal = [](const comm::datalayer::Variant*, core::IContainer*&, core::cmd::CmdOptPermType&,
                                             core::dia::IDiagCollector&) { return CmdResult::NoOptionData; };
  Complaints complaints;
  GenericCmdOptionFactory sut{complaints};
};

TEST_F(GenericCmdOptionFactoryTest, keepsWhatWasRegistered) {
  EXPECT_EQ(add({ObjectType::KINEMATICS, "Option"}), CmdResult::Okay);
  const auto entry = sut.find({ObjectType::KINEMATICS, "Option"});
  ASSERT_NE(entry, nullptr);
  EXPECT_THAT(entry->groups, ElementsAre("group"));
  EXPECT_EQ(entry->description, "What it adds");
  EXPECT_EQ(std::string(entry->schema.begin(), entry->schema.end()), contentOf(SCHEMA));
  EXPECT_THAT(entry->slots, IsEmpty());
  core::cmd::GenericCmdOption* option = nullptr;
  std::string errText;
  EXPECT_EQ(entry->create(option, errText), CmdResult::NullPointer);
  EXPECT_TRUE(static_cast<bool>(entry->marshal));
}

TEST_F(GenericCmdOptionFactoryTest, keepsSlots) {
  EXPECT_EQ(sut.registerCmdOptionWithSlots({ObjectType::AXIS, "Option"}, create, marshal, {}, SCHEMA, "", "", {3, 1}),
            CmdResult::Okay);
  EXPECT_THAT(sut.find({ObjectType::AXIS, "Option"})->slots, ElementsAre(3U, 1U));
}

TEST_F(GenericCmdOptionFactoryTest, refusesDuplicatesAndMissingSchemas) {
  ASSERT_EQ(add({ObjectType::AXIS, "Option"}), CmdResult::Okay);
  EXPECT_EQ(add({ObjectType::AXIS, "Option"}), CmdResult::AlreadyRegistered);
  EXPECT_EQ(add({ObjectType::AXIS, "Other"}, MISSING), CmdResult::SchemaNotReadable);
  EXPECT_EQ(sut.all().size(), 1U);
  EXPECT_THAT(complaints.all(), ElementsAre(HasSubstr("'Option'"), HasSubstr("'" + MISSING + "'")));
}

TEST_F(GenericCmdOptionFactoryTest, forgets) {
  ASSERT_EQ(add({ObjectType::AXIS, "Option"}), CmdResult::Okay);
  EXPECT_EQ(sut.unregisterCmdOption({ObjectType::KINEMATICS, "Option"}), CmdResult::NotRegistered);
  EXPECT_EQ(sut.unregisterCmdOption({ObjectType::AXIS, "Option"}), CmdResult::Okay);
  EXPECT_EQ(sut.unregisterCmdOption({ObjectType::AXIS, "Option"}), CmdResult::NotRegistered);
  EXPECT_EQ(sut.find({ObjectType::AXIS, "Option"}), nullptr);
}

TEST(ReadBinarySchemaTest, readsEverySchemaOfTheBundle) {
  std::size_t count = 0;
  for (const auto& file : std::filesystem::directory_iterator(KAVO_TEST_SCHEMA_DIR)) {
    EXPECT_EQ(readBinarySchema(file.path()).size(), file.file_size());
    ++count;
  }
  EXPECT_GE(count, 7U);
}

}  // namespace
}  // namespace motion::host
