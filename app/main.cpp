#include "app/SNMPDiscoveryApp.h"
#include "app/StandardDescriptors.h"

#include <Poco/AutoPtr.h>
#include <Poco/Exception.h>
#include <Poco/Util/Application.h>

int main(int argc, char** argv)
{
    openMissingStandardDescriptors();
    Poco::AutoPtr<SNMPDiscoveryApp> application(new SNMPDiscoveryApp);
    try {
        application->init(argc, argv);
    } catch (const Poco::Exception& exception) {
        application->logger().log(exception);
        return Poco::Util::Application::EXIT_CONFIG;
    }
    return application->run();
}
