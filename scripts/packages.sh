# Shared by scripts/run, scripts/test and scripts/bench: installs the Debian packages
# the build needs when they are missing, then configures and builds one build tree.
# Sourced, not run.

QM_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"

# Everything a fresh Debian machine lacks to build, test and run the workbench.
QM_BUILD_PACKAGES=(
    g++ cmake ninja-build pkg-config
    libgtest-dev libgmock-dev libbenchmark-dev
    libcli11-dev nlohmann-json3-dev
    qt6-base-dev qt6-svg-dev libgl-dev libqpdf-dev
    python3 python3-xlrd fonts-dejavu-core poppler-utils
    clang libclang-rt-14-dev time parallel xvfb xdotool x11-apps
)

# What the web edition adds: the WebAssembly compiler (its optimizer runs on node with
# Debian's acorn), a browser for the page's tests. node and npm come from Debian
# unless the machine already has them.
QM_WEB_PACKAGES=(
    emscripten node-acorn chromium
)
QM_NODE_PACKAGES=(
    nodejs npm
)

qm_missing_packages() {
    local pkg
    for pkg in "$@"; do
        if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed'; then
            printf '%s\n' "$pkg"
        fi
    done
}

qm_ensure_packages() {
    local missing
    mapfile -t missing < <(qm_missing_packages "$@")
    [ "${#missing[@]}" -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local sudo=""
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "Need root to install: ${missing[*]}" >&2; return 1; }
        sudo="sudo"
    fi
    export DEBIAN_FRONTEND=noninteractive
    $sudo apt-get update -qq
    $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# qm_build DIR [cmake options...]: configure DIR when needed, then build it.
qm_build() {
    local dir="$1"; shift
    cmake -S "$QM_ROOT" -B "$dir" -G Ninja --log-level=WARNING "$@"
    cmake --build "$dir" --parallel "$(nproc)"
}
