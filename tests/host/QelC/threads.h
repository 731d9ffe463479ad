/* Runs a function on two threads at once, and waits for a hundredth of a second. */
static void (*thread_function)(void);

#ifdef _WIN32
#include <windows.h>

static void wait_briefly(void) { Sleep(10); }

static DWORD WINAPI run_thread(LPVOID argument) {
  (void)argument;
  thread_function();
  return 0;
}

static void run_twice(void (*function)(void)) {
  HANDLE threads[2];
  thread_function = function;
  threads[0] = CreateThread(NULL, 0, run_thread, NULL, 0, NULL);
  threads[1] = CreateThread(NULL, 0, run_thread, NULL, 0, NULL);
  WaitForMultipleObjects(2, threads, TRUE, INFINITE);
}
#else
#include <pthread.h>
#include <unistd.h>

static void wait_briefly(void) { usleep(10000); }

static void* run_thread(void* argument) {
  (void)argument;
  thread_function();
  return NULL;
}

static void run_twice(void (*function)(void)) {
  pthread_t threads[2];
  thread_function = function;
  pthread_create(&threads[0], NULL, run_thread, NULL);
  pthread_create(&threads[1], NULL, run_thread, NULL);
  pthread_join(threads[0], NULL);
  pthread_join(threads[1], NULL);
}
#endif
