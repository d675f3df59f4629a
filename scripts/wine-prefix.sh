# Sourced by the scripts that run Windows programs: a throw-away Wine prefix.

# Makes a prefix of its own in a temporary folder and starts its server. The script calls remove_prefix when it ends,
# in a trap set before: also an interrupted run leaves nothing behind.
#   make_prefix null    windows without a display
#   make_prefix x11     windows on the display that DISPLAY names
make_prefix() {
  prefix_folder=$(mktemp -d)
  export WINEPREFIX="$prefix_folder/prefix" WINEDEBUG=-all LC_ALL=C.UTF-8
  # No questions about components that nothing here needs.
  export WINEDLLOVERRIDES="mscoree,mshtml="
  if [ "$1" = null ]; then
    unset DISPLAY
  fi
  mkdir "$WINEPREFIX"
  wineserver -p
  wine wineboot -i > /dev/null 2>&1
  # Windows 8; a crash ends the program at once instead of asking.
  cat > "$prefix_folder/settings.reg" << 'REG'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine]
"Version"="win8"

[HKEY_CURRENT_USER\Software\Wine\WineDbg]
"ShowCrashDialog"=dword:00000000

[HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\AeDebug]
"Debugger"="false"
REG
  if [ "$1" = null ]; then
    printf '\n[HKEY_CURRENT_USER\\Software\\Wine\\Drivers]\n"Graphics"="null"\n' >> "$prefix_folder/settings.reg"
  fi
  wine regedit /S "$prefix_folder/settings.reg" > /dev/null 2>&1
  # The graphics driver is chosen when the desktop starts.
  wineserver -k
  wineserver -w
  wineserver -p
  # The first program starts the services, which keep its output open for as long as they live.
  wine cmd /c exit < /dev/null > /dev/null 2>&1
}

remove_prefix() {
  [ -n "${prefix_folder:-}" ] || return 0
  wineserver -k > /dev/null 2>&1 || true
  wineserver -w > /dev/null 2>&1 || true
  rm -rf "$prefix_folder"
}
