// A start of the real component while the data layer does not list its nodes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/datalayer/data_layer.h"
#include "host/framework/bundle_loader.h"
#include "host/framework/component_lifecycle.h"
#include "host/motion/runtime.h"
#include "host/trace/trace_service.h"

namespace motion::host::run {
namespace {

using namespace comm::datalayer;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/// Does not show wildcard addresses in the list of nodes.
class HidingClient : public IClient {
 public:
  HidingClient(IClient* client, int& reads) : m_client(client), m_reads(reads) {}
  DlResult readSync(const std::string& address, Variant* data) override {
    ++m_reads;
    const DlResult result = m_client->readSync(address, data);
    if (data->getStrings() != nullptr) {
      Variant::Strings shown;
      for (const std::string& node : *data->getStrings()) {
        if (!node.ends_with("*")) {
          shown.push_back(node);
        }
      }
      *data = Variant(std::move(shown));
    }
    return result;
  }
  DlResult writeSync(const std::string& address, Variant* data) override { return m_client->writeSync(address, data); }
  DlResult browseSync(const std::string& address, Variant* data) override { return m_client->browseSync(address, data); }
  DlResult createSync(const std::string& address, Variant* data) override { return m_client->createSync(address, data); }
  DlResult removeSync(const std::string& address) override { return m_client->removeSync(address); }
  DlResult metadataSync(const std::string& address, Variant* data) override { return m_client->metadataSync(address, data); }

 private:
  std::unique_ptr<IClient> m_client;
  int& m_reads;
};

class HidingDataLayer : public IDataLayerFactory {
 public:
  IClient* createClient(const std::string& endpoint) override {
    ++m_clients;
    IClient* const client = m_real.createClient(endpoint);
    return m_isHiding ? new HidingClient(client, m_reads) : client;
  }
  IProvider* createProvider(const std::string& endpoint) override { return m_real.createProvider(endpoint); }
  DlResult createMemorySync(std::shared_ptr<IMemoryOwner>& memory, const std::string& address, IProvider* provider,
                            std::uint32_t size, MemoryType type) override {
    return m_real.createMemorySync(memory, address, provider, size, type);
  }
  DlResult deleteMemorySync(const std::shared_ptr<IMemoryOwner>& memory) override { return m_real.deleteMemorySync(memory); }
  DlResult openMemory(std::shared_ptr<IMemoryUser>& memory, const std::string& address) override {
    return m_real.openMemory(memory, address);
  }
  DlResult closeMemory(const std::shared_ptr<IMemoryUser>& memory) override { return m_real.closeMemory(memory); }

  datalayer::DataLayer m_real;
  bool m_isHiding = true;
  int m_clients = 0;
  int m_reads = 0;
};

class HiddenNodesTest : public testing::Test {
 protected:
  HiddenNodesTest() {
    m_trace.addListener([this](const trace::TraceEntry& entry) {
      const std::scoped_lock lock(m_mutex);
      m_texts.emplace_back(entry.text.data());
    });
    Records& records = m_runtime.records();
    m_services.trace = &m_trace;
    m_services.motionExtIF = &records.extension;
    m_services.dataLayerFactory = &m_dataLayer;
    m_services.motionCmdIF = &records.cmd;
    m_services.motionSysIF = &records.sys;
    m_services.motionCmdIF2 = &records.cmd2;
    m_services.motionSysIF2 = &records.sys2;
    m_services.motionDataIF = &records.data;
  }

  [[nodiscard]] std::vector<std::string> texts() {
    m_trace.flush();
    const std::scoped_lock lock(m_mutex);
    return m_texts;
  }

  std::mutex m_mutex;
  std::vector<std::string> m_texts;
  trace::TraceService m_trace{nullptr};  // destroyed before what its listener writes to
  HidingDataLayer m_dataLayer;
  Runtime m_runtime{{}};
  framework::Services m_services;
};

TEST_F(HiddenNodesTest, EndTheStartAfterTenSecondsAndLeaveNothingBehind) {
  framework::LoadResult loaded = framework::loadBundle(KAVO_BUNDLE);
  ASSERT_TRUE(loaded.bundle) << loaded.error;
  framework::ComponentLifecycle lifecycle(std::move(*loaded.bundle));
  ASSERT_TRUE(lifecycle.setServices(m_services, KAVO_BUNDLE, "Motion.Kavo").isOk());
  ASSERT_TRUE(lifecycle.init().isOk());
  const auto before = std::chrono::steady_clock::now();
  const framework::StepResult started = lifecycle.start(std::chrono::minutes(5));
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::seconds(10)) << "200 looks, 50 ms after each";
  EXPECT_FALSE(started.isOk());
  EXPECT_EQ(m_dataLayer.m_clients, 1);
  EXPECT_EQ(m_dataLayer.m_reads, 200);

  datalayer::DataLayer& dataLayer = m_dataLayer.m_real;
  EXPECT_EQ(dataLayer.providerCount(), 0U);
  EXPECT_EQ(dataLayer.memoryCount(), 0U);
  EXPECT_EQ(dataLayer.openHandleCount(), 0U);
  EXPECT_TRUE(dataLayer.scopes().identifiers().empty());
  EXPECT_EQ(m_runtime.records().sysSync.setSignal, nullptr);
  EXPECT_EQ(m_runtime.records().sys.getSignal, nullptr);
  EXPECT_EQ(m_runtime.records().cmdGeneral.setSignalCmd, nullptr);
  EXPECT_THAT(texts(), Contains("Creation of scopes at datalayer/security/scopes succeeded"));
  EXPECT_THAT(texts(), Contains("Deletion of scopes succeeded"));
  EXPECT_THAT(texts(), Contains(HasSubstr("MotionKavoSys::initialize() failed")));

  m_dataLayer.m_isHiding = false;
  EXPECT_TRUE(lifecycle.start(std::chrono::minutes(1)).isOk()) << "a failed start can be repeated";
  EXPECT_EQ(dataLayer.connect({"motion.view"})->readSync("motion/state/functions/kavo/signals/05", nullptr), DL_OK);
  dataLayer.closeClients();
  EXPECT_TRUE(lifecycle.stop().isOk());
  EXPECT_EQ(dataLayer.providerCount(), 0U);
}

}  // namespace
}  // namespace motion::host::run
