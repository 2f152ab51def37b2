"""The macOS pipeline of Rook Bay: declarations, link stubs and fakes from API facts; toolchain, bundle, signature."""
