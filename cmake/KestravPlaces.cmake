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

# Each of these is what the distribution's own packages say, so that nobody has to choose; whoever packages can.
include(FindPkgConfig)

# kestrav_place(VARIABLE MODULE NAME FALLBACK EXPLANATION): the folder that the pkg-config file MODULE calls NAME.
function(kestrav_place variable module name fallback explanation)
  set(place "")
  if(PKG_CONFIG_FOUND)
    pkg_get_variable(place ${module} ${name})
  endif()
  if(NOT place)
    set(place "${fallback}")
  endif()
  set(${variable} "${place}" CACHE PATH "${explanation}")
endfunction()

set(share "${CMAKE_INSTALL_FULL_DATADIR}")
set(KESTRAV_LIBEXEC "${CMAKE_INSTALL_FULL_LIBEXECDIR}/kestrav" CACHE PATH
  "Where the installed programs are that people don't start")
kestrav_place(KESTRAV_UNITS systemd systemdsystemunitdir "/usr/lib/systemd/system" "Where systemd looks for units of packages")
kestrav_place(KESTRAV_UDEV udev udevdir "/usr/lib/udev" "Where udev keeps what is its own")
set(KESTRAV_UDEV_RULES "${KESTRAV_UDEV}/rules.d" CACHE PATH "Where udev looks for rules of packages")
kestrav_place(KESTRAV_POLKIT_ACTIONS polkit-gobject-1 actiondir "${share}/polkit-1/actions" "Where polkit looks for actions")
kestrav_place(KESTRAV_BASH_COMPLETIONS bash-completion completionsdir "${share}/bash-completion/completions"
  "Where bash-completion looks for completions")
kestrav_place(KESTRAV_FISH_COMPLETIONS fish completionsdir "${share}/fish/vendor_completions.d"
  "Where fish looks for completions of packages")
# zsh has a folder of its own for packages on Debian and what descends from it, and nowhere else.
set(zsh "site-functions")
if(EXISTS "/etc/debian_version")
  set(zsh "vendor-completions")
endif()
set(KESTRAV_ZSH_COMPLETIONS "${share}/zsh/${zsh}" CACHE PATH "Where zsh looks for completions of packages")
set(KESTRAV_PKTTYAGENT "${CMAKE_INSTALL_FULL_BINDIR}/pkttyagent" CACHE FILEPATH
  "polkit's program that asks for a password in a terminal")
