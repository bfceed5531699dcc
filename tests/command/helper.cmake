kestrav_test(command_helper_test SOURCES HelperInstallationTest.cpp JobTest.cpp LINKS command_helper)

kestrav_test(helper_channel_test
  SOURCES HelperPresenceTest.cpp SdBusHelperChannelTest.cpp fakes/BusHelper.cpp
  LINKS helper_channel_linux private_bus system_bus)

kestrav_test(polkit_authorization_test
  SOURCES PolkitAuthorizationTest.cpp
  LINKS authorization_linux sandbox)
add_dependencies(polkit_authorization_test kestrav-bless)
