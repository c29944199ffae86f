#include "os/Process.h"
#include "os/Services.h"
#include "support/TestMachine.h"

#include <gtest/gtest.h>

using namespace os;

namespace {

// A service of the test's own, removed at the end whatever happens.
class ServicesConformance : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(error::Success, OpenSCManager("", svc::ManagerAllAccess, manager));
        name = std::string("EngineTest") +
               ::testing::UnitTest::GetInstance()->current_test_info()->name() +
               std::to_string(GetCurrentProcessId());
        config.displayName = "Engine conformance test";
        config.binaryPath = "C:\\EngineTest\\absent.exe";
    }
    void TearDown() override {
        for (ServiceHandle handle : held) {
            CloseServiceHandle(handle);
        }
        for (const std::string& each : {name + "Child", name}) {
            ServiceHandle handle = 0;
            if (OpenService(manager, each, svc::AllAccess, handle) == error::Success) {
                DeleteService(handle);
                CloseServiceHandle(handle);
            }
        }
        CloseServiceHandle(manager);
    }

    TestMachine machine;
    // Handles that a failed assertion would leave open, which would keep a deleted service.
    ServiceHandle hold(ServiceHandle handle) {
        held.push_back(handle);
        return handle;
    }

    ServiceHandle manager = 0;
    std::vector<ServiceHandle> held;
    std::string name;
    ServiceConfig config;
};

TEST_F(ServicesConformance, ManagerCodesOfAServiceThatNeverRuns) {
    ServiceHandle service = 0;
    EXPECT_EQ(error::ServiceDoesNotExist, OpenService(manager, name, svc::AllAccess, service));
    ASSERT_EQ(error::Success, CreateService(manager, name, config, svc::AllAccess, service));
    hold(service);
    ServiceHandle again = 0;
    EXPECT_EQ(error::ServiceExists, CreateService(manager, name, config, svc::AllAccess, again));

    ServiceStatus status;
    ASSERT_EQ(error::Success, QueryServiceStatus(service, status));
    EXPECT_EQ(svc::Stopped, status.currentState);
    EXPECT_EQ(svc::Win32OwnProcess, status.serviceType);
    EXPECT_EQ(error::ServiceNotActive, ControlService(service, svc::ControlStop, status));
    EXPECT_EQ(error::Success, ChangeServiceConfig2(service, "A service of the engine's tests."));

    // A second service that depends on the first. Its display name must differ: two services
    // of one display name are refused.
    ServiceConfig childConfig = config;
    EXPECT_EQ(error::DuplicateServiceName,
              CreateService(manager, name + "Child", childConfig, svc::AllAccess, again));
    childConfig.displayName = "Engine conformance test, dependent";
    childConfig.dependencies = {name};
    ServiceHandle child = 0;
    ASSERT_EQ(error::Success,
              CreateService(manager, name + "Child", childConfig, svc::AllAccess, child));
    std::vector<ServiceEntry> dependents;
    ASSERT_EQ(error::Success, EnumDependentServices(service, svc::StateAll, dependents));
    // Wine lists no dependents at all; Windows and the simulation list the one there is.
    if (machine.IsSimulated()) {
        ASSERT_EQ(1u, dependents.size());
    }
    if (!dependents.empty()) {
        ASSERT_EQ(1u, dependents.size());
        EXPECT_EQ(name + "Child", dependents[0].serviceName);
    }
    ASSERT_EQ(error::Success, EnumDependentServices(service, svc::StateActive, dependents));
    EXPECT_TRUE(dependents.empty());

    // Deleting marks the service; it goes when its last handle closes.
    EXPECT_EQ(error::Success, DeleteService(child));
    EXPECT_EQ(error::ServiceMarkedForDelete, DeleteService(child));
    EXPECT_EQ(error::ServiceMarkedForDelete,
              CreateService(manager, name + "Child", childConfig, svc::AllAccess, again));
    EXPECT_EQ(error::Success, CloseServiceHandle(child));
    EXPECT_EQ(error::ServiceDoesNotExist,
              OpenService(manager, name + "Child", svc::AllAccess, child));
}

TEST_F(ServicesConformance, AHandleDoesOnlyWhatItWasOpenedFor) {
    ServiceHandle service = 0;
    ASSERT_EQ(error::Success, CreateService(manager, name, config, svc::AllAccess, service));
    CloseServiceHandle(service);
    ASSERT_EQ(error::Success, OpenService(manager, name, svc::QueryStatus, service));
    hold(service);
    ServiceStatus status;
    EXPECT_EQ(error::Success, QueryServiceStatus(service, status));
    EXPECT_EQ(error::AccessDenied, DeleteService(service));
    EXPECT_EQ(error::AccessDenied, StartService(service));
}

} // namespace
