# Entry points for a fresh machine. Each target installs the Debian packages it lacks,
# then builds with CMake and Ninja.
PACKAGES := cmake ninja-build g++ clang libclang-rt-14-dev pkg-config zlib1g-dev \
            libgtest-dev libgmock-dev libbenchmark-dev libxml2-dev libexpat1-dev locales \
            python3 python3-pyftpdlib zip \
            gcovr libpugixml-dev libicu-dev \
            doxygen graphviz lintian
BUILD    ?= build
JOBS     ?= $(shell nproc)

.PHONY: deps demo check test asan clang bench fuzz coverage package docs clean

deps:
	@missing=""; for p in $(PACKAGES); do \
	  dpkg -s $$p >/dev/null 2>&1 || missing="$$missing $$p"; done; \
	if [ -n "$$missing" ]; then \
	  echo "Installing:$$missing"; \
	  SUDO=$$( [ "$$(id -u)" = 0 ] || echo sudo ); \
	  $$SUDO apt-get update && DEBIAN_FRONTEND=noninteractive $$SUDO apt-get install -y $$missing; \
	fi

demo: deps
	cmake -S . -B $(BUILD)/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DKYBASE_TESTS=OFF -DKYBASE_BENCH=OFF
	cmake --build $(BUILD)/release -j $(JOBS) --target tour
	$(BUILD)/release/examples/tour examples/data

test: deps
	cmake -S . -B $(BUILD)/check -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKYBASE_WERROR=ON
	cmake --build $(BUILD)/check -j $(JOBS) --target all bench
	tools/run_tests.sh $(BUILD)/check plain

asan: deps
	cmake -S . -B $(BUILD)/asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKYBASE_WERROR=ON -DKYBASE_SANITIZE=ON -DKYBASE_BENCH=OFF
	cmake --build $(BUILD)/asan -j $(JOBS)
	tools/run_tests.sh $(BUILD)/asan sanitizers

# The same suite built by clang, so that both supported compilers stay warning-free.
clang: deps
	CC=clang CXX=clang++ cmake -S . -B $(BUILD)/clang -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKYBASE_WERROR=ON -DKYBASE_BENCH=OFF
	cmake --build $(BUILD)/clang -j $(JOBS)
	tools/run_tests.sh $(BUILD)/clang clang

# The reference is built too, so that an undocumented public name fails the check.
check: test asan clang docs
	@tools/run_tests.sh --summary $(BUILD)/check $(BUILD)/asan $(BUILD)/clang

bench: deps
	cmake -S . -B $(BUILD)/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DKYBASE_TESTS=OFF
	cmake --build $(BUILD)/bench -j $(JOBS) --target bench
	@for b in $(BUILD)/bench/bench/*_bench; do echo "== $$b"; $$b || exit 1; done

fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B $(BUILD)/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKYBASE_FUZZ=ON -DKYBASE_BENCH=OFF
	cmake --build $(BUILD)/fuzz -j $(JOBS)

# Line and branch coverage of kybase/ by the test suite: an HTML report in
# $(BUILD)/coverage/html and one summary line. Branches that only the compiler made
# (exception clean-ups, throws the library never takes) are left out of the count.
# Long sweeps are sampled there (KY_TEST_SAMPLED), as under the sanitizers.
coverage: deps
	cmake -S . -B $(BUILD)/coverage -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKYBASE_BENCH=OFF \
	  -DCMAKE_CXX_FLAGS="--coverage -fprofile-update=atomic -DKY_TEST_SAMPLED" -DCMAKE_EXE_LINKER_FLAGS=--coverage \
	  -DCMAKE_SHARED_LINKER_FLAGS=--coverage
	cmake --build $(BUILD)/coverage -j $(JOBS)
	find $(BUILD)/coverage -name '*.gcda' -delete
	tools/run_tests.sh $(BUILD)/coverage coverage
	mkdir -p $(BUILD)/coverage/html
	gcovr -r . --object-directory $(BUILD)/coverage --filter 'kybase/' --exclude-directories '.*/CMakeFiles/[0-9].*' \
	  --exclude-unreachable-branches --exclude-throw-branches -j $(JOBS) \
	  --html-details $(BUILD)/coverage/html/index.html --txt $(BUILD)/coverage/coverage.txt \
	  --print-summary > $(BUILD)/coverage/summary.txt
	@echo "coverage of kybase/: $$(grep -E '^(lines|branches):' $(BUILD)/coverage/summary.txt | tr '\n' ' ')"
	@echo "report: $(BUILD)/coverage/html/index.html"

# The HTML reference of the public headers (Doxygen, with Graphviz's graphs) in
# $(BUILD)/docs/reference/html. Any Doxygen warning, an undocumented public name
# included, fails the target; the list is in $(BUILD)/docs/reference/warnings.log.
docs: deps
	cmake -S . -B $(BUILD)/docs -G Ninja -DKYBASE_TESTS=OFF -DKYBASE_BENCH=OFF -DKYBASE_EXAMPLES=OFF
	cmake --build $(BUILD)/docs --target docs

# Debian packages in $(BUILD)/package: libkybase0 (library and tools) and libkybase-dev,
# built for /usr with Debian's hardening flags, then unpacked and used by the consumer
# program and checked by lintian (tests/package/run_deb.cmake).
package: deps
	CXXFLAGS="$$(dpkg-buildflags --get CXXFLAGS) $$(dpkg-buildflags --get CPPFLAGS)" \
	LDFLAGS="$$(dpkg-buildflags --get LDFLAGS)" \
	  cmake -S . -B $(BUILD)/package -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
	  -DKYBASE_WERROR=ON -DKYBASE_TESTS=OFF -DKYBASE_BENCH=OFF
	cmake --build $(BUILD)/package -j $(JOBS)
	cmake -P $(BUILD)/package/debian/check.cmake
	@ls $(BUILD)/package/debian/check/debs/*.deb

clean:
	rm -rf $(BUILD)
