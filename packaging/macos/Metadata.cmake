# The property lists and entitlements of the extension and of the app that carries it. Made on every
# system, so that they are tested where no Mac is.
#
#   TARNEL_SIGNING            development, developer-id or adhoc
#   TARNEL_TEAM_ID            the ten characters of the team; not for adhoc
#   TARNEL_APP_PROFILE        the app's provisioning profile: with one the app says who it is
#   TARNEL_ADHOC_FSMODULE     adhoc only: claim the file-system module's entitlement all the same

set(TARNEL_APP_ID com.tarnel.desktop)
set(TARNEL_EXTENSION_ID ${TARNEL_APP_ID}.fskitext)
set(TARNEL_MACOS_MINIMUM 26.0)

function(tarnel_entitle_true variable key)
  set(${variable} "${${variable}}  <key>${key}</key>\n  <true/>\n" PARENT_SCOPE)
endfunction()

function(tarnel_entitle_text variable key text)
  set(${variable} "${${variable}}  <key>${key}</key>\n  <string>${text}</string>\n" PARENT_SCOPE)
endfunction()

# A group's name begins with the team, so that no profile has to grant it, and is short, since a
# socket in its folder has a path of at most 103 bytes.
function(tarnel_entitle_group variable)
  set(${variable}
      "${${variable}}  <key>com.apple.security.application-groups</key>\n  <array>\n    <string>${TARNEL_TEAM_ID}.tarnel</string>\n  </array>\n"
      PARENT_SCOPE)
endfunction()

# Identity is granted by a profile: claimed without one, the system ends the program at its start.
function(tarnel_entitle_identity variable bundle)
  set(all "${${variable}}")
  tarnel_entitle_text(all com.apple.application-identifier ${TARNEL_TEAM_ID}.${bundle})
  tarnel_entitle_text(all com.apple.developer.team-identifier ${TARNEL_TEAM_ID})
  set(${variable} "${all}" PARENT_SCOPE)
endfunction()

# Writes Extension-Info.plist, App-Info.plist, Extension.entitlements and App.entitlements.
function(tarnel_macos_metadata folder)
  set(source ${CMAKE_CURRENT_FUNCTION_LIST_DIR})
  configure_file(${source}/extension/Info.plist.in ${folder}/Extension-Info.plist @ONLY)
  configure_file(${source}/app/Info.plist.in ${folder}/App-Info.plist @ONLY)

  set(entitlements "")
  if(NOT TARNEL_SIGNING STREQUAL "adhoc")
    tarnel_entitle_identity(entitlements ${TARNEL_EXTENSION_ID})
    tarnel_entitle_group(entitlements)
  endif()
  if(NOT TARNEL_SIGNING STREQUAL "adhoc" OR TARNEL_ADHOC_FSMODULE)
    tarnel_entitle_true(entitlements com.apple.developer.fskit.fsmodule)
  endif()
  tarnel_entitle_true(entitlements com.apple.security.app-sandbox)
  # Connecting to a socket of the file system counts as outgoing network traffic.
  tarnel_entitle_true(entitlements com.apple.security.network.client)
  configure_file(${source}/Entitlements.plist.in ${folder}/Extension.entitlements @ONLY)

  set(entitlements "")
  if(NOT TARNEL_SIGNING STREQUAL "adhoc")
    if(TARNEL_APP_PROFILE)
      tarnel_entitle_identity(entitlements ${TARNEL_APP_ID})
    endif()
    tarnel_entitle_group(entitlements)
  endif()
  configure_file(${source}/Entitlements.plist.in ${folder}/App.entitlements @ONLY)
endfunction()
