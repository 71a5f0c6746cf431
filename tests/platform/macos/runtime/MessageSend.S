// Sends a message on x86-64: finds the method, restores every argument register and jumps to it.

.macro SAVE
  push %rbp
  mov %rsp, %rbp
  sub $192, %rsp
  mov %rdi, -8(%rbp)
  mov %rsi, -16(%rbp)
  mov %rdx, -24(%rbp)
  mov %rcx, -32(%rbp)
  mov %r8, -40(%rbp)
  mov %r9, -48(%rbp)
  mov %rax, -56(%rbp)
  movups %xmm0, -80(%rbp)
  movups %xmm1, -96(%rbp)
  movups %xmm2, -112(%rbp)
  movups %xmm3, -128(%rbp)
  movups %xmm4, -144(%rbp)
  movups %xmm5, -160(%rbp)
  movups %xmm6, -176(%rbp)
  movups %xmm7, -192(%rbp)
.endm

.macro RESTORE
  mov %rax, %r11
  mov -8(%rbp), %rdi
  mov -16(%rbp), %rsi
  mov -24(%rbp), %rdx
  mov -32(%rbp), %rcx
  mov -40(%rbp), %r8
  mov -48(%rbp), %r9
  mov -56(%rbp), %rax
  movups -80(%rbp), %xmm0
  movups -96(%rbp), %xmm1
  movups -112(%rbp), %xmm2
  movups -128(%rbp), %xmm3
  movups -144(%rbp), %xmm4
  movups -160(%rbp), %xmm5
  movups -176(%rbp), %xmm6
  movups -192(%rbp), %xmm7
  leave
.endm

  .text
  .globl objc_msgSend
  .type objc_msgSend, @function
objc_msgSend:
  test %rdi, %rdi
  jz 1f
  SAVE
  call hushbox_lookUp@PLT
  RESTORE
  jmp *%r11
1:
  xor %eax, %eax
  xor %edx, %edx
  xorps %xmm0, %xmm0
  xorps %xmm1, %xmm1
  ret
  .size objc_msgSend, . - objc_msgSend

  .globl objc_msgSend_stret
  .type objc_msgSend_stret, @function
objc_msgSend_stret:
  test %rsi, %rsi
  jz 1f
  SAVE
  mov %rsi, %rdi
  mov %rdx, %rsi
  call hushbox_lookUp@PLT
  RESTORE
  jmp *%r11
1:
  mov %rdi, %rax
  ret
  .size objc_msgSend_stret, . - objc_msgSend_stret

  .globl objc_msgSendSuper2
  .type objc_msgSendSuper2, @function
objc_msgSendSuper2:
  SAVE
  call hushbox_lookUpSuper@PLT
  RESTORE
  mov (%rdi), %rdi
  jmp *%r11
  .size objc_msgSendSuper2, . - objc_msgSendSuper2

  .globl objc_msgSendSuper2_stret
  .type objc_msgSendSuper2_stret, @function
objc_msgSendSuper2_stret:
  SAVE
  mov %rsi, %rdi
  mov %rdx, %rsi
  call hushbox_lookUpSuper@PLT
  RESTORE
  mov (%rsi), %rsi
  jmp *%r11
  .size objc_msgSendSuper2_stret, . - objc_msgSendSuper2_stret

  .section .note.GNU-stack, "", @progbits
