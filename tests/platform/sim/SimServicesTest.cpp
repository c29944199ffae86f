#include "os/Services.h"
#include "os/Spooler.h"
#include "os/Time.h"
#include "sim/IniText.h"
#include "sim/SimMachine.h"
#include "support/TestMachine.h"

#include <fstream>
#include <gtest/gtest.h>

using namespace os;

namespace {

void AppendFaults(const TestMachine& machine, const std::string& text) {
    std::ofstream(machine.HostDir() + "/faults.ini", std::ios::app) << text;
    std::string why;
    ASSERT_TRUE(sim::SimMachine::Activate(machine.HostDir(), why)) << why;
}

class ServiceHandles {
public:
    ServiceHandles() { EXPECT_EQ(error::Success, OpenSCManager("", svc::ManagerAllAccess, manager)); }
    ~ServiceHandles() {
        for (ServiceHandle handle : opened) {
            CloseServiceHandle(handle);
        }
        CloseServiceHandle(manager);
    }
    ServiceHandle Open(const std::string& name, std::uint32_t access = svc::AllAccess) {
        ServiceHandle handle = 0;
        EXPECT_EQ(error::Success, OpenService(manager, name, access, handle)) << name;
        opened.push_back(handle);
        return handle;
    }
    static ServiceStatus Status(ServiceHandle handle) {
        ServiceStatus status;
        EXPECT_EQ(error::Success, QueryServiceStatus(handle, status));
        return status;
    }

    ServiceHandle manager = 0;
    std::vector<ServiceHandle> opened;
};

TEST(SimServices, Windows9xHasNoServiceManager) {
    TestMachine machine("win98");
    ServiceHandle manager = 7;
    EXPECT_EQ(error::CallNotImplemented, OpenSCManager("", svc::ManagerAllAccess, manager));
    EXPECT_EQ(0u, manager);
}

TEST(SimServices, EachPresetHoldsTheSpoolerWithItsDependencies) {
    struct Expected {
        const char* preset;
        std::vector<std::string> spoolerNeeds;
    };
    for (const Expected& expected : {Expected{"nt4", {}}, Expected{"win2000", {"RPCSS"}},
                                     Expected{"xp", {"RPCSS"}},
                                     Expected{"win7-x64", {"RPCSS", "http"}}}) {
        TestMachine machine(expected.preset);
        std::string why;
        sim::SimMachine* current = sim::SimMachine::Current(why);
        ASSERT_NE(nullptr, current) << why;
        const sim::SimService* spooler = current->Services().Find("spooler");
        ASSERT_NE(nullptr, spooler) << expected.preset;
        EXPECT_EQ(expected.spoolerNeeds, spooler->dependencies) << expected.preset;
        EXPECT_EQ(4u, spooler->state);
        // Every dependency is a service of the machine.
        for (const std::string& name : spooler->dependencies) {
            EXPECT_NE(nullptr, current->Services().Find(name)) << name;
        }
    }
}

TEST(SimServices, AStartIsPendingOnTheMachinesClockAndBringsWhatItNeeds) {
    TestMachine machine("xp");
    ServiceHandles handles;
    ServiceHandle fax = handles.Open("Fax");
    ServiceHandle tapi = handles.Open("TapiSrv");
    EXPECT_EQ(svc::Stopped, ServiceHandles::Status(tapi).currentState);
    ASSERT_EQ(error::Success, StartService(fax));
    EXPECT_EQ(svc::Running, ServiceHandles::Status(tapi).currentState);
    ServiceStatus status = ServiceHandles::Status(fax);
    EXPECT_EQ(svc::StartPending, status.currentState);
    EXPECT_EQ(1u, status.checkPoint);
    EXPECT_EQ(3000u, status.waitHint);
    EXPECT_EQ(error::ServiceAlreadyRunning, StartService(fax));
    Sleep(1000);
    status = ServiceHandles::Status(fax);
    EXPECT_EQ(svc::StartPending, status.currentState);
    EXPECT_EQ(3u, status.checkPoint);
    Sleep(500);
    status = ServiceHandles::Status(fax);
    EXPECT_EQ(svc::Running, status.currentState);
    EXPECT_EQ(svc::AcceptStop, status.controlsAccepted);
    EXPECT_EQ(error::ServiceAlreadyRunning, StartService(fax));

    // The spooler cannot stop while the fax service that needs it runs.
    ServiceHandle spooler = handles.Open("Spooler");
    EXPECT_EQ(error::DependentServicesRunning, ControlService(spooler, svc::ControlStop, status));
    std::vector<ServiceEntry> active;
    ASSERT_EQ(error::Success, EnumDependentServices(spooler, svc::StateActive, active));
    ASSERT_EQ(1u, active.size());
    EXPECT_EQ("Fax", active[0].serviceName);
}

TEST(SimServices, TheSpoolerAnswersOnlyWhileItRunsAndTheFileKeepsItsState) {
    TestMachine machine("win2000");
    {
        ServiceHandles handles;
        ServiceHandle spooler = handles.Open("Spooler");
        ServiceStatus status;
        ASSERT_EQ(error::Success, ControlService(spooler, svc::ControlStop, status));
        EXPECT_EQ(svc::StopPending, status.currentState);
        std::vector<PrinterInfo> printers;
        EXPECT_EQ(error::RpcServerUnavailable, EnumPrinters(printers));
        Sleep(2000);
        EXPECT_EQ(svc::Stopped, ServiceHandles::Status(spooler).currentState);
        EXPECT_EQ(error::ServiceNotActive, ControlService(spooler, svc::ControlStop, status));
    }
    sim::SimMachine::Release();
    sim::IniText services;
    std::string why;
    ASSERT_TRUE(services.Load(machine.HostDir() + "/services.ini", why)) << why;
    EXPECT_EQ("Stopped", services.GetOr("Spooler", "State", ""));
    sim::IniText spooler;
    ASSERT_TRUE(spooler.Load(machine.HostDir() + "/spooler.ini", why)) << why;
    EXPECT_EQ("Stopped", spooler.GetOr("Spooler", "State", ""));
}

TEST(SimServices, FaultsHangRefuseToStartOrToStop) {
    TestMachine machine("xp");
    AppendFaults(machine, "[Services]\nFax=hang\nTapiSrv=nostart\nSpooler=nostop\n");
    ServiceHandles handles;
    ServiceHandle tapi = handles.Open("TapiSrv");
    EXPECT_EQ(error::ServiceRequestTimeout, StartService(tapi));
    EXPECT_EQ(svc::Stopped, ServiceHandles::Status(tapi).currentState);
    // The fax service needs the telephony service, which does not start.
    ServiceHandle fax = handles.Open("Fax");
    EXPECT_EQ(error::ServiceDependencyFail, StartService(fax));

    ServiceStatus status;
    ServiceHandle spooler = handles.Open("Spooler");
    EXPECT_EQ(0u, ServiceHandles::Status(spooler).controlsAccepted);
    EXPECT_EQ(error::InvalidServiceControl, ControlService(spooler, svc::ControlStop, status));
    EXPECT_EQ(svc::Running, status.currentState);
}

TEST(SimServices, AHungServiceNeverMovesItsCheckPoint) {
    TestMachine machine("win7-x64");
    AppendFaults(machine, "[Services]\nTapiSrv=hang\n");
    ServiceHandles handles;
    ServiceHandle tapi = handles.Open("TapiSrv");
    ASSERT_EQ(error::Success, StartService(tapi));
    Sleep(60000);
    ServiceStatus status = ServiceHandles::Status(tapi);
    EXPECT_EQ(svc::StartPending, status.currentState);
    EXPECT_EQ(1u, status.checkPoint);
}

TEST(SimServices, ARunningServiceMarkedForDeletionGoesOnceStoppedAndClosed) {
    TestMachine machine("xp");
    ServiceHandles handles;
    ServiceHandle spoolerDependent = handles.Open("Fax");
    ASSERT_EQ(error::Success, StartService(spoolerDependent));
    Sleep(2000);
    ASSERT_EQ(error::Success, DeleteService(spoolerDependent));
    EXPECT_EQ(error::ServiceMarkedForDelete, StartService(spoolerDependent));
    ServiceStatus status;
    ASSERT_EQ(error::Success, ControlService(spoolerDependent, svc::ControlStop, status));
    Sleep(2000);
    handles.opened.clear();
    EXPECT_EQ(error::Success, CloseServiceHandle(spoolerDependent));
    ServiceHandle gone = 0;
    EXPECT_EQ(error::ServiceDoesNotExist, OpenService(handles.manager, "Fax", svc::AllAccess, gone));
}

} // namespace
