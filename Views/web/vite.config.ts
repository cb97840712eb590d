import { defineConfig } from 'vite';

// The daemon serves the built files from its web directory; CMake hands that
// directory over in RINGWELL_WEB_OUT so that a build never writes into the
// source tree.
export default defineConfig({
  base: '/',
  build: {
    outDir: process.env.RINGWELL_WEB_OUT ?? 'dist',
    emptyOutDir: true,
    target: 'es2022',
    chunkSizeWarningLimit: 400,
  },
  server: {
    // `npm run dev` talks to a running daemon; set RINGWELL_DEV_TARGET to its address.
    proxy: {
      '/v1': process.env.RINGWELL_DEV_TARGET ?? 'http://127.0.0.1:7383',
    },
  },
});
