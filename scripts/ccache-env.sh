# Sourced by the build scripts: compiler-cache hits do not depend on the folder
# the repository was cloned into, so a fresh clone reuses an earlier build's work.
export CCACHE_BASEDIR="$PWD"
export CCACHE_NOHASHDIR=1
