kestrav_test(command_helper_test SOURCES HelperInstallationTest.cpp JobTest.cpp LINKS command_helper)

kestrav_test(helper_channel_test
  SOURCES SdBusHelperChannelTest.cpp fakes/BusHelper.cpp
  LINKS helper_channel_linux private_bus sd_bus_pointers)
