# The client side of the privileged helper: its installation and the channel to it.
kestrav_library(command_helper
  SOURCES HelperInstallation.cpp Job.cpp SMJError.cpp
  PUBLIC base)
add_subdirectory(linux)
