// Lint rules for the web app and its tests: ESLint's and typescript-eslint's
// recommended sets.

import js from '@eslint/js';
import tseslint from 'typescript-eslint';

export default tseslint.config(
  { ignores: ['node_modules/', 'test-results/', 'dist/'] },
  js.configs.recommended,
  ...tseslint.configs.recommended,
);
