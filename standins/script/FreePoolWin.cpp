// At its start the run-time library sets memory aside for exceptions that are thrown when there is
// no more, and keeps it when the library is freed. A server that loads and frees a stand-in for
// every request would seem to grow; so it is given back when the library goes.

namespace __gnu_cxx {
void __freeres() noexcept;
}

namespace {

class GivesBackAtTheEnd {
 public:
  constexpr GivesBackAtTheEnd() = default;
  ~GivesBackAtTheEnd() { __gnu_cxx::__freeres(); }
};

[[maybe_unused]] const GivesBackAtTheEnd g_givesBack;

}  // namespace
