# Where everything stands once it is installed, and which part of the installation ("component") each file belongs to.
# The components are the packages that are made of them:
#   kestrav           the window, the helper's installer and payload
#   kestrav-cli       kestravctl
#   libkestrav-dev    the library, for programs of other people
#   kestrav-commandd  the command service, and what it needs to do anything: the accessory's names and the polkit action
#
# The prefix is /usr unless somebody chooses another: polkit reads actions from nowhere else, and the programs know each
# other by their installed places.
if(CMAKE_INSTALL_PREFIX_INITIALIZED_TO_DEFAULT)
  set_property(CACHE CMAKE_INSTALL_PREFIX PROPERTY VALUE "/usr")
endif()
include(GNUInstallDirs)

set(KESTRAV_LIBEXEC "/usr/libexec/kestrav" CACHE PATH "Where the installed programs are that people don't start")
set(KESTRAV_UNITS "/lib/systemd/system" CACHE PATH "Where systemd looks for units of packages")
set(KESTRAV_UDEV_RULES "/lib/udev/rules.d" CACHE PATH "Where udev looks for rules of packages")
