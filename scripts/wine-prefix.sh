# Sourced by the scripts that run Windows programs: throw-away Wine prefixes. Called from the project's folder.
#
#   make_template             build/wine-prefix: a prefix that nothing ran in yet, made once and kept
#   make_prefix_folder        prefix_folder: a temporary folder for the copies
#   copy_prefix FROM TO       another prefix, like the template
#   show_windows FOLDER       lets a prefix that is not started yet show its windows on the display
#   give_prefix FOLDER USER   makes a prefix one of another user
#   start_prefix              starts the server of WINEPREFIX, and its services
#   check_heaps               lets every program of WINEPREFIX that starts from now on mark the ends of its heap's blocks
#                             and what is free; it tells of double frees with WINEDEBUG=-all,err+all,warn+heap
#   end_prefix                ends the server of WINEPREFIX and all programs in it
#   remove_prefixes           ends all servers of prefix_folder and deletes it; for a trap that is set before
#
# The graphics driver of the template draws nothing and needs no display.
if [ "${WINE_ADDRESSES:-}" != fixed ] && setarch -R true 2> /dev/null; then
  # The script that sources this begins anew, with addresses that the kernel does not choose by chance. By chance it
  # puts something of a program's where Wine needs a page: one or two of ten thousand are given up before they begin
  # ("failed to map the shared user data"). Where this is not allowed, as in some containers, that can happen.
  export WINE_ADDRESSES=fixed
  exec setarch -R "scripts/$(basename "$0")" "$@"
fi
export WINEDEBUG=-all LC_ALL=C.UTF-8
# No questions about components that nothing here needs.
export WINEDLLOVERRIDES="mscoree,mshtml="

make_template() {
  local template=$PWD/build/wine-prefix made_by
  made_by="$(wine --version 2> /dev/null) $(cksum < scripts/wine-prefix.sh)"
  if [ "$(cat "$template/made-by" 2> /dev/null)" = "$made_by" ]; then
    return
  fi
  rm -rf "$template"
  mkdir -p build
  (
    set -e
    WINEPREFIX=$(mktemp -d "$template.XXXXXX")
    export WINEPREFIX
    trap 'end_prefix; rm -rf "$WINEPREFIX"' EXIT
    unset DISPLAY
    wineserver -p
    wine wineboot -i
    # Windows 8; a crash ends the program at once instead of asking.
    cat > "$WINEPREFIX/settings.reg" << 'REG'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine]
"Version"="win8"

[HKEY_CURRENT_USER\Software\Wine\WineDbg]
"ShowCrashDialog"=dword:00000000

[HKEY_CURRENT_USER\Software\Wine\Drivers]
"Graphics"="null"

[HKEY_LOCAL_MACHINE\Software\Microsoft\Windows NT\CurrentVersion\AeDebug]
"Debugger"="false"
REG
    wine regedit /S "$WINEPREFIX/settings.reg"
    # Its registry is on the disk when the server has ended.
    wineserver -k
    wineserver -w
    # Copies with the server's mark would all have one server.
    rm -f "$WINEPREFIX/wineserver" "$WINEPREFIX/settings.reg"
    echo "$made_by" > "$WINEPREFIX/made-by"
    mv -T "$WINEPREFIX" "$template"
    trap - EXIT
  )
}

make_prefix_folder() {
  prefix_folder=$(mktemp -d)
  # Servers that run as another user have their prefixes in it too.
  chmod 711 "$prefix_folder"
}

# The system's programs, nearly all of the 700 MB, become hard links where that can be: nobody writes to them.
copy_prefix() {
  local from=$1 to=$2 shared
  mkdir "$to" &&
    tar -C "$from" --exclude=./drive_c/windows/system32 --exclude=./drive_c/windows/winsxs -cf - . |
    tar -C "$to" -xf - &&
    for shared in drive_c/windows/system32 drive_c/windows/winsxs; do
      [ ! -e "$from/$shared" ] || cp -al "$from/$shared" "$to/$shared" 2> /dev/null ||
        cp -a --reflink=auto "$from/$shared" "$to/"drive_c/windows/ || return
    done
}

show_windows() {
  sed -i 's/"Graphics"="null"/"Graphics"="x11"/' "$1/user.reg"
}

give_prefix() {
  find "$1" -path '*/windows/system32' -prune -o -path '*/windows/winsxs' -prune -o -exec chown -h "$2:$2" {} +
}

start_prefix() {
  wineserver -p &&
    # The first program starts the services, which keep its output open for as long as they live.
    wine cmd /c exit < /dev/null > /dev/null 2>&1
}

# Without 0x80, which checks the whole heap at each call: slow, and not fit for several threads.
check_heaps() {
  wine reg add 'HKLM\System\CurrentControlSet\Control\Session Manager' /v GlobalFlag /t REG_DWORD /d 0x70 /f
}

end_prefix() {
  local owner as_owner=()
  owner=$(stat -c %u "$WINEPREFIX")
  if [ "$owner" != "$(id -u)" ]; then
    as_owner=(setpriv "--reuid=$owner" "--regid=$owner" --clear-groups)
  fi
  "${as_owner[@]}" wineserver -k > /dev/null 2>&1 || true
  "${as_owner[@]}" wineserver -w > /dev/null 2>&1 || true
}

remove_prefixes() {
  [ -n "${prefix_folder:-}" ] || return 0
  export WINEPREFIX
  for WINEPREFIX in "$prefix_folder"/prefix*/; do
    [ ! -d "$WINEPREFIX" ] || end_prefix
  done
  rm -rf "$prefix_folder"
}
