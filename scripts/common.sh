# Shared by the scripts: installs what is missing and builds. Source it from the project's root.
# CC and CXX choose the compiler; each has a build folder of its own.

project_version() {
  sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt
}

# The headers that are installed.
public_headers() {
  local others
  others=$(sed -n 's/.*PATTERN "\(.*\.h\)" EXCLUDE.*/\1/p' cmake/install.cmake | sed 's/\./\\./g; s/\*/.*/' | paste -sd '|')
  find zynaggr zynhost zynplatform -name '*.h' | grep -vE "(^|/)($others)\$" | LC_ALL=C sort
}

# install_packages PACKAGE...: through apt, as root or with sudo; where that cannot be, says what to ask for.
install_packages() {
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  if ! command -v apt-get >/dev/null || ! command -v "${as_root[@]:-true}" >/dev/null; then
    echo "Missing, and to be installed by somebody who may (names of Debian's packages): $*" >&2
    return 1
  fi
  echo "Installing: $*"
  "${as_root[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq --no-install-recommends "$@" >/dev/null
}

# Silent when nothing is missing.
install_missing() {
  local missing=()
  local compiler=${CXX:-g++}
  case $(basename "$compiler") in
    clang*) command -v "$compiler" >/dev/null || missing+=(clang) ;;
    *) command -v "$compiler" >/dev/null || missing+=(g++) ;;
  esac
  # clang builds with the headers and libraries that come with g++.
  [ ${#missing[@]} -eq 0 ] || [ "${missing[0]}" = g++ ] || command -v g++ >/dev/null || missing+=(g++)
  command -v cmake >/dev/null || missing+=(cmake)
  command -v ninja >/dev/null || missing+=(ninja-build)
  [ -e /usr/include/gmock/gmock.h ] || missing+=(libgtest-dev libgmock-dev)
  [ ${#missing[@]} -eq 0 ] || install_packages "${missing[@]}"
}

# build_dir PRESET: where that preset is built with this compiler.
build_dir() {
  echo "build/$1${CXX:+-$(basename "$CXX")}"
}

# build PRESET [CMAKE ARGUMENT...]
build() {
  local preset=$1 log
  shift
  log=$(mktemp)
  if ! { cmake --preset "$preset" -B "$(build_dir "$preset")" "$@" &&
         cmake --build "$(build_dir "$preset")"; } >"$log" 2>&1; then
    cat "$log"
    rm -f "$log"
    return 1
  fi
  grep -A5 'warning:' "$log" || true
  rm -f "$log"
}
