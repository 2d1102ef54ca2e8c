// A bundle whose library lacks the factory.
extern "C" int createSomethingElse() {
  return 0;
}
