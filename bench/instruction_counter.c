/* A plugin of QEMU's user emulation that counts the instructions of the emulated program, all threads together, in a
 * file that can be read at any time: 8 bytes in the machine's order. Usage: qemu-arm -plugin THIS.so,out=FILE PROGRAM
 *
 * Debian ships no header for plugins: what is used of the interface, version 1, is declared here. */
#include <fcntl.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

struct qemu_plugin_tb;
typedef uint64_t qemu_plugin_id_t;
typedef void (*Translated)(qemu_plugin_id_t, struct qemu_plugin_tb *);
enum { kAddU64 = 0 };

extern void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id, Translated callback);
extern size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb *block);
extern void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb *block, int operation, void *counter,
                                                     uint64_t immediate);

int qemu_plugin_version = 1;

static uint64_t *counter;

static void count_block(qemu_plugin_id_t id, struct qemu_plugin_tb *block) {
  (void)id;
  qemu_plugin_register_vcpu_tb_exec_inline(block, kAddU64, counter, qemu_plugin_tb_n_insns(block));
}

int qemu_plugin_install(qemu_plugin_id_t id, const void *information, int count, char **arguments) {
  (void)information;
  const char *path = count == 1 ? strchr(arguments[0], '=') : NULL;
  const int file = path == NULL ? -1 : open(path + 1, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (file < 0 || ftruncate(file, sizeof *counter) != 0) {
    return 1;
  }
  counter = mmap(NULL, sizeof *counter, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  if (counter == MAP_FAILED) {
    return 1;
  }
  qemu_plugin_register_vcpu_tb_trans_cb(id, count_block);
  return 0;
}
