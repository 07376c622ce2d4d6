# A thin front over the CMake presets. Each target first installs any missing Debian
# package it needs (as root, or with sudo), so a fresh Debian machine needs only `make`.

JOBS ?= $(shell nproc)
# Extra configure options, e.g. CMAKE_ARGS=-DFORMWORK_WARNINGS_AS_ERRORS=ON
CMAKE_ARGS ?=

BUILD_PACKAGES := g++ cmake make libxxhash-dev
TEST_PACKAGES := libgtest-dev libgmock-dev assimp-testmodels
# The formwork program, which the default build builds: its command line, importer and PNG writer.
TOOL_PACKAGES := libcli11-dev libassimp-dev libspng-dev pkg-config
BENCH_PACKAGES := libbenchmark-dev libpcl-dev libglm-dev libnanoflann-dev libcgal-dev libopenmesh-dev
# The second compiler, with its sanitizer runtimes, for `make asan-clang`.
CLANG_PACKAGES := clang libclang-rt-dev
# Doxygen and Graphviz for the API reference (`make docs`).
DOCS_PACKAGES := doxygen graphviz

.PHONY: all test asan asan-clang bench build demo deps docs format fuzz package clean

all: test

deps:
	@cmake/install-packages.sh $(BUILD_PACKAGES) $(TEST_PACKAGES) $(TOOL_PACKAGES) $(BENCH_PACKAGES)

build:
	@cmake/install-packages.sh $(BUILD_PACKAGES) $(TEST_PACKAGES) $(TOOL_PACKAGES)
	cmake --preset default $(CMAKE_ARGS)
	cmake --build --preset default -j $(JOBS)

test: build
	ctest --preset default -j $(JOBS)

# The suite under the sanitizers, built with g++ (asan) or clang (asan-clang).
asan asan-clang:
	@cmake/install-packages.sh $(BUILD_PACKAGES) $(TEST_PACKAGES) $(TOOL_PACKAGES) \
		$(if $(filter asan-clang,$@),$(CLANG_PACKAGES))
	cmake --preset $@ $(CMAKE_ARGS)
	cmake --build --preset $@ -j $(JOBS)
	ctest --preset $@ -j $(JOBS)

# The program on a torus it makes itself, through every step that needs no outside file.
DEMO := build/demo
FORMWORK := build/default/tools/formwork/formwork
demo:
	@cmake/install-packages.sh $(BUILD_PACKAGES) $(TEST_PACKAGES) $(TOOL_PACKAGES)
	cmake --preset default $(CMAKE_ARGS)
	cmake --build --preset default -j $(JOBS) --target formwork-program
	@mkdir -p $(DEMO)
	$(FORMWORK) make-torus $(DEMO)/torus.fwpk
	$(FORMWORK) info $(DEMO)/torus.fwpk
	$(FORMWORK) dump $(DEMO)/torus.fwpk | head -n 20
	$(FORMWORK) subdivide $(DEMO)/torus.fwpk $(DEMO)/torus-sqrt3.fwpk --levels 2 --undo 1
	$(FORMWORK) render $(DEMO)/torus.fwpk $(DEMO)/torus.png
	$(FORMWORK) render $(DEMO)/torus-sqrt3.fwpk $(DEMO)/torus-sqrt3.png --wireframe
	$(FORMWORK) export $(DEMO)/torus-sqrt3.fwpk $(DEMO)/torus-sqrt3.glb
	@echo "The demo's files are in $(DEMO)/: torus.fwpk (the torus), torus-sqrt3.fwpk and"
	@echo "torus-sqrt3.glb (after sqrt(3) subdivision), torus.png and torus-sqrt3.png (pictures)."

bench:
	@cmake/install-packages.sh $(BUILD_PACKAGES) $(TOOL_PACKAGES) $(BENCH_PACKAGES)
	cmake --preset release $(CMAKE_ARGS)
	cmake --build --preset release -j $(JOBS)
	bench/run-all.sh build/release/bench

# Every fuzz target for FUZZ_SECONDS each over its seed corpus (written by the build).
FUZZ_SECONDS ?= 60
fuzz:
	@cmake/install-packages.sh $(BUILD_PACKAGES) $(CLANG_PACKAGES)
	cmake --preset fuzz $(CMAKE_ARGS)
	cmake --build --preset fuzz -j $(JOBS)
	fuzz/run-all.sh build/fuzz/fuzz $(FUZZ_SECONDS)

# The API reference, HTML with class diagrams, in build/docs/html; fails on any warning other
# than an undocumented member.
docs:
	@cmake/install-packages.sh $(DOCS_PACKAGES)
	cmake/build-docs.sh build/docs

# A .deb and a .tar.gz of the libraries, headers, CMake and pkg-config files, the program and
# the docs (CPack, release build), then a check that the unpacked .deb serves a consumer and
# runs the program.
package:
	@cmake/install-packages.sh $(BUILD_PACKAGES) $(TOOL_PACKAGES)
	cmake --preset package $(CMAKE_ARGS)
	cmake --build --preset package -j $(JOBS)
	cpack --preset package
	cmake -DPACKAGE_DIR=build/package -DCONSUMER_SOURCE_DIR=tests/install/consumer \
		-DCXX_COMPILER=$${CXX:-c++} -P tests/install/PackageConsume.cmake

format:
	git ls-files '*.h' '*.cpp' '*.inl' | xargs clang-format -i

clean:
	rm -rf build
